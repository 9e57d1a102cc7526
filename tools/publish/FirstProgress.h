// SPDX-License-Identifier: MIT
//
// Says how far the first publication is: on a terminal all the time, and a line at its end.
//
// Thread safety: one thread.
#ifndef KECPP_TOOLS_PUBLISH_FIRSTPROGRESS_H
#define KECPP_TOOLS_PUBLISH_FIRSTPROGRESS_H

#include <chrono>

#include "tools/publish/Counters.h"
#include "tools/publish/Marks.h"

namespace tools::publish {

class FirstProgress {
 public:
  FirstProgress();

  void Show(const Counters& counters, const Marks& marks);

 private:
  const bool isTerminal;
  const std::chrono::steady_clock::time_point begin = std::chrono::steady_clock::now();
  bool isOver = false;
};

}  // namespace tools::publish

#endif
