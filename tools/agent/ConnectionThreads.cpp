// SPDX-License-Identifier: MIT
#include "tools/agent/ConnectionThreads.h"

#include <system_error>
#include <thread>
#include <utility>

namespace tools::agent {

bool ConnectionThreads::Start(std::function<void()> serve) {
  if (!TakePlace()) return false;
  try {
    std::thread([this, run = std::move(serve)] {
      run();
      GivePlace();
    }).detach();
    return true;
  } catch (const std::system_error&) {  // no more threads
    GivePlace();
    return false;
  }
}

void ConnectionThreads::AwaitEnd() {
  std::unique_lock<std::mutex> lock(mutex);
  left.wait(lock, [this] { return taken == 0; });
}

bool ConnectionThreads::TakePlace() {
  std::lock_guard<std::mutex> lock(mutex);
  if (taken == limit) return false;
  ++taken;
  return true;
}

// The last thing that a connection's thread does: after it this object may be gone.
void ConnectionThreads::GivePlace() {
  std::lock_guard<std::mutex> lock(mutex);
  --taken;
  left.notify_all();
}

}  // namespace tools::agent
