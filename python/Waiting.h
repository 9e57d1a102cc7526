// SPDX-License-Identifier: MIT
//
// Waiting without Python's interpreter lock.
//
// Thread safety: any thread that holds the interpreter lock.
#ifndef KECPP_PYTHON_WAITING_H
#define KECPP_PYTHON_WAITING_H

#include <pybind11/pybind11.h>

#include <chrono>
#include <optional>

namespace kecpp::python {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::milliseconds;

// Gives the interpreter lock up while it exists.
//
// When the interpreter ends meanwhile, Python ends the thread where it asks for the lock again, by
// unwinding its stack. No destructor survives that, neither this one nor those of its callers. So
// the thread stops here instead, holding nothing, until the process has ended.
class Unlocked {
 public:
  Unlocked() : thread(PyEval_SaveThread()) {}
  ~Unlocked();
  Unlocked(const Unlocked&) = delete;
  Unlocked& operator=(const Unlocked&) = delete;

 private:
  PyThreadState* const thread;
};

// A limit as Python has it: seconds, or none. Throws ValueError for what is no number.
class Deadline {
 public:
  explicit Deadline(std::optional<double> seconds);

  // How long to wait without a look at signals, rounded up. Only the main thread handles signals.
  Milliseconds Slice() const;
  bool IsOver() const { return Clock::now() >= time; }

 private:
  Clock::time_point time;
};

// Names the calling thread as the one that handles signals.
void SetMainThread(unsigned long identifier);

// Runs the handlers of signals that have arrived. Throws what they throw, KeyboardInterrupt
// foremost.
void CheckSignals();

// Calls `wait` with times to wait, without the interpreter lock, until it gives an answer; false
// when the time is over. Ctrl-C ends it.
template <class Wait>
bool WaitUntil(const Deadline& deadline, const Wait& wait) {
  for (;;) {
    std::optional<bool> answer;
    {
      const Unlocked unlocked;
      answer = wait(deadline.Slice());
    }
    CheckSignals();
    if (answer) return *answer;
    if (deadline.IsOver()) return false;
  }
}

}  // namespace kecpp::python

#endif
