// SPDX-License-Identifier: MIT
//
// SIGHUP asks a daemon to read its files again.
#ifndef KECPP_TOOLS_AGENT_HANGUP_H
#define KECPP_TOOLS_AGENT_HANGUP_H

#include <atomic>
#include <functional>
#include <thread>

namespace tools::agent {

class HangUp {
 public:
  // Calls `again` for each SIGHUP, on a separate thread, until the object is destroyed. EndPolitely
  // must have been called before. `again` throws nothing.
  explicit HangUp(std::function<void()> again);
  ~HangUp();
  HangUp(const HangUp&) = delete;
  HangUp& operator=(const HangUp&) = delete;

 private:
  void Await();

  const std::function<void()> again;
  std::atomic<bool> ended{false};
  std::thread thread;
};

}  // namespace tools::agent

#endif
