// SPDX-License-Identifier: MIT
#include "stress/Watchdog.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "stress/ThreadStacks.h"

namespace stress {
namespace {

using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point when) {
  return std::chrono::duration<double>(Clock::now() - when).count();
}

std::string HolderOf(const char* lock, const std::vector<Posture>& all) {
  for (const Posture& posture : all) {
    for (const char* held : posture.holds) {
      if (std::strcmp(held, lock) == 0) return "held by '" + posture.actor + "'";
    }
  }
  return "held by no actor: the library";
}

std::string Describe(const Posture& posture, const std::vector<Posture>& all) {
  std::string text = "'" + posture.actor + "' (thread " + std::to_string(posture.thread) + ") " +
                     posture.step + " for " + std::to_string(SecondsSince(posture.since)) + " s";
  if (posture.waitsFor) {
    text += std::string("; waits for ") + posture.waitsFor + ", " + HolderOf(posture.waitsFor, all);
  }
  for (const char* held : posture.holds) text += std::string("; holds ") + held;
  return text;
}

[[noreturn]] void ReportAndAbort(const Posture& stuck, const std::vector<Posture>& all) {
  std::fprintf(stderr, "watchdog: no progress of '%s'\n", stuck.actor.c_str());
  for (const Posture& posture : all) {
    std::fprintf(stderr, "  %s\n", Describe(posture, all).c_str());
  }
  PrintThreadStacks();
  std::abort();
}

}  // namespace

Watchdog::Watchdog(const Board& watched, std::chrono::milliseconds patience)
    : board(watched), limit(patience) {
  PrepareThreadStacks();
  thread = std::thread([this] { Run(); });
}

Watchdog::~Watchdog() {
  {
    const std::lock_guard<std::mutex> lock(mutex);
    stop = true;
  }
  woken.notify_all();
  thread.join();
}

void Watchdog::Run() {
  std::unique_lock<std::mutex> lock(mutex);
  while (!woken.wait_for(lock, limit / 10, [this] { return stop; })) Check();
}

void Watchdog::Check() const {
  const std::vector<Posture> all = board.Look();
  const auto stuck = std::find_if(all.begin(), all.end(), [this](const Posture& posture) {
    return !posture.resting && Clock::now() - posture.since > limit;
  });
  if (stuck != all.end()) ReportAndAbort(*stuck, all);
}

}  // namespace stress
