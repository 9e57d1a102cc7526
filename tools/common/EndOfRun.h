// SPDX-License-Identifier: MIT
//
// When to end: Ctrl-C (or a polite kill), or the end of a given time.
//
// Thread safety: Ended may be asked from any thread.
#ifndef KECPP_TOOLS_COMMON_ENDOFRUN_H
#define KECPP_TOOLS_COMMON_ENDOFRUN_H

#include <chrono>
#include <optional>

namespace tools {

class EndOfRun {
 public:
  // From now on the first SIGINT or SIGTERM ends the run; a second one ends the process at once.
  // `seconds` from now the run ends by itself; 0 is never.
  explicit EndOfRun(double seconds);

  bool Ended() const;

  // `milliseconds`, or what is left of the run when that is less; at least 1.
  int Slice(int milliseconds) const;

 private:
  std::optional<std::chrono::steady_clock::time_point> deadline;
};

}  // namespace tools

#endif
