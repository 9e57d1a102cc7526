// SPDX-License-Identifier: MIT
#include "stress/ThreadStacks.h"

#include <execinfo.h>
#include <semaphore.h>
#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>

namespace stress {
namespace {

constexpr int DEPTH = 30;
sem_t printed;

void PrintOwnStack(int /*signal*/) {
  void* frames[DEPTH];
  backtrace_symbols_fd(frames, backtrace(frames, DEPTH), STDERR_FILENO);
  sem_post(&printed);
}

bool AwaitPrinted() {
  timespec end = {};
  clock_gettime(CLOCK_REALTIME, &end);
  ++end.tv_sec;
  return sem_timedwait(&printed, &end) == 0;
}

}  // namespace

void PrepareThreadStacks() {
  void* frame[1];
  backtrace(frame, 1);  // the first call loads a library, which no signal handler may
  sem_init(&printed, 0, 0);
  struct sigaction action = {};
  action.sa_handler = PrintOwnStack;
  action.sa_flags = SA_RESTART;
  sigaction(SIGUSR2, &action, nullptr);
}

void PrintThreadStacks() {
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/task")) {
    const int thread = std::atoi(entry.path().filename().c_str());
    std::fprintf(stderr, "thread %d:\n", thread);
    syscall(SYS_tgkill, getpid(), thread, SIGUSR2);
    if (!AwaitPrinted()) std::fprintf(stderr, "  does not answer\n");
  }
}

}  // namespace stress
