// SPDX-License-Identifier: MIT
//
// Ends the process when it does not end by itself: while the system looks up a host name, nothing
// can be cut short.
#ifndef KECPP_TOOLS_COMMON_ENDWATCH_H
#define KECPP_TOOLS_COMMON_ENDWATCH_H

#include <condition_variable>
#include <mutex>
#include <thread>

#include "tools/common/EndOfRun.h"

namespace tools {

class EndWatch {
 public:
  // Five seconds after the end of the run, when the object still lives, the process ends with
  // status 1; `program` is its name in the message.
  EndWatch(const EndOfRun& end, const char* program);
  ~EndWatch();
  EndWatch(const EndWatch&) = delete;
  EndWatch& operator=(const EndWatch&) = delete;

 private:
  void Watch();

  const EndOfRun& end;
  const char* const program;
  std::mutex mutex;
  std::condition_variable changed;
  bool done = false;  // guarded by `mutex`
  std::thread thread;
};

}  // namespace tools

#endif
