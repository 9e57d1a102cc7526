// SPDX-License-Identifier: MIT
//
// Says on standard error when something stops working and when it works again: a line for each.
//
// Thread safety: one thread.
#ifndef KECPP_TOOLS_PUBLISH_TROUBLE_H
#define KECPP_TOOLS_PUBLISH_TROUBLE_H

#include <chrono>
#include <string>

namespace tools::publish {

class Trouble {
 public:
  // It does not work; said once until it does, and again when the reason is another one for long.
  void Begin(const std::string& reason);
  void End();
  bool IsThere() const { return !text.empty(); }

 private:
  using Clock = std::chrono::steady_clock;

  std::string text;  // what was said last; empty: it works
  Clock::time_point since{};
  Clock::time_point said{};
};

}  // namespace tools::publish

#endif
