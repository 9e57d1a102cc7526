// SPDX-License-Identifier: MIT
#include "tools/common/EndOfRun.h"

#include <csignal>

#include <algorithm>
#include <atomic>

namespace tools {
namespace {

using Clock = std::chrono::steady_clock;

// The handler may run on any thread, so `volatile sig_atomic_t` is not enough.
std::atomic<bool> interrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a handler must not lock");

void OnSignal(int) {
  interrupted = true;
}

}  // namespace

EndOfRun::EndOfRun(double seconds) {
  if (seconds > 0) {
    deadline = Clock::now() + std::chrono::milliseconds(static_cast<long long>(seconds * 1000));
  }
  struct sigaction action = {};
  action.sa_handler = OnSignal;
  action.sa_flags = SA_RESETHAND | SA_RESTART;
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
}

bool EndOfRun::Ended() const {
  return interrupted || (deadline && Clock::now() >= *deadline);
}

int EndOfRun::Slice(int milliseconds) const {
  if (!deadline) return milliseconds;
  const auto left =
      std::chrono::duration_cast<std::chrono::milliseconds>(*deadline - Clock::now()).count();
  return static_cast<int>(std::clamp<long long>(left, 1, milliseconds));
}

}  // namespace tools
