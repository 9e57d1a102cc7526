// SPDX-License-Identifier: MIT
//
// Releases a thread that is blocked in the library when the run ends.
#ifndef KECPP_TOOLS_COMMON_ENDWATCH_H
#define KECPP_TOOLS_COMMON_ENDWATCH_H

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

#include "tools/common/EndOfRun.h"

namespace tools {

class EndWatch {
 public:
  // Once the run has ended, calls `release` again and again, on a separate thread, for as long as
  // the object lives: one call may come too early. Five seconds after the end of the run, when the
  // system is still looking up a host name, the process ends with status 1; `program` is its name
  // in that message.
  EndWatch(const EndOfRun& end, const char* program, std::function<void()> release);
  ~EndWatch();  // waits for a call that is under way
  EndWatch(const EndWatch&) = delete;
  EndWatch& operator=(const EndWatch&) = delete;

 private:
  void Watch();
  [[noreturn]] void GiveUp() const;

  const EndOfRun& end;
  const char* const program;
  const std::function<void()> release;
  std::mutex mutex;
  std::condition_variable changed;
  bool done = false;  // guarded by `mutex`
  std::thread thread;
};

}  // namespace tools

#endif
