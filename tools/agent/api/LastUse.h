// SPDX-License-Identifier: MIT
//
// When something was used last, to forget it when nobody needs it any more.
//
// Thread safety: any thread.
#ifndef KECPP_TOOLS_AGENT_API_LASTUSE_H
#define KECPP_TOOLS_AGENT_API_LASTUSE_H

#include <atomic>
#include <chrono>

namespace tools::agent::api {

class LastUse {
 public:
  void Touch() { second = Now(); }
  bool IsLongAgo() const { return Now() - second > 60; }

 private:
  static long Now() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<long>(std::chrono::duration_cast<std::chrono::seconds>(now).count());
  }

  std::atomic<long> second{Now()};
};

}  // namespace tools::agent::api

#endif
