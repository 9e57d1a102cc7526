// SPDX-License-Identifier: MIT
#include <execinfo.h>
#include <semaphore.h>
#include <signal.h>
#include <sys/syscall.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>

#include "stress/Board.h"

namespace stress {
namespace {

constexpr int DEPTH = 30;
sem_t printed;

void PrintOwnStack(int /*signal*/) {
  void* frames[DEPTH];
  backtrace_symbols_fd(frames, backtrace(frames, DEPTH), STDERR_FILENO);
  sem_post(&printed);
}

void PrepareThreadStacks() {
  void* frame[1];
  backtrace(frame, 1);  // the first call loads a library, which no signal handler may
  sem_init(&printed, 0, 0);
  struct sigaction action = {};
  action.sa_handler = PrintOwnStack;
  action.sa_flags = SA_RESTART;
  sigaction(SIGUSR2, &action, nullptr);
}

// A thread that does not answer within a second is passed over.
void PrintThreadStacks() {
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/task")) {
    const int thread = std::atoi(entry.path().filename().c_str());
    std::fprintf(stderr, "thread %d:\n", thread);
    syscall(SYS_tgkill, getpid(), thread, SIGUSR2);
    timespec end = {};
    clock_gettime(CLOCK_REALTIME, &end);
    ++end.tv_sec;
    if (sem_timedwait(&printed, &end) != 0) std::fprintf(stderr, "  does not answer\n");
  }
}

bool Holds(const Posture& posture, const std::string& lock) {
  return std::any_of(posture.holds.begin(), posture.holds.end(),
                     [&](const char* held) { return held == lock; });
}

void Describe(const Posture& posture, const std::vector<Posture>& all) {
  std::string text = "'" + posture.actor + "' (thread " + std::to_string(posture.thread) + ") " +
                     posture.step + " for " + std::to_string(posture.Seconds()) + " s";
  if (posture.waitsFor) {
    const auto holder = std::find_if(all.begin(), all.end(), [&](const Posture& candidate) {
      return Holds(candidate, posture.waitsFor);
    });
    text += std::string("; waits for ") + posture.waitsFor + ", held by " +
            (holder != all.end() ? "'" + holder->actor + "'" : "no actor: the library");
  }
  for (const char* held : posture.holds) text += std::string("; holds ") + held;
  std::fprintf(stderr, "  %s\n", text.c_str());
}

void Check(const Board& board, double limit) {
  const std::vector<Posture> all = board.Look();
  const auto stuck = std::find_if(all.begin(), all.end(), [&](const Posture& posture) {
    return !posture.resting && posture.Seconds() > limit;
  });
  if (stuck == all.end()) return;
  std::fprintf(stderr, "watchdog: no progress of '%s'\n", stuck->actor.c_str());
  for (const Posture& posture : all) Describe(posture, all);
  PrintThreadStacks();
  std::abort();
}

}  // namespace

Watchdog::Watchdog(const Board& board, std::chrono::milliseconds limit) {
  PrepareThreadStacks();
  thread = std::thread([&board, limit, stopped = stop.get_future()] {
    while (stopped.wait_for(limit / 10) == std::future_status::timeout) {
      Check(board, std::chrono::duration<double>(limit).count());
    }
  });
}

}  // namespace stress
