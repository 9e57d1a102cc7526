// SPDX-License-Identifier: MIT
#include "Waiting.h"

#include <cxxabi.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cmath>

namespace py = pybind11;

namespace kecpp::python {
namespace {

// At once, for a person; and too rare to cost anything.
constexpr Milliseconds kSignalSlice(50);
constexpr double kLongestSeconds = 365.0 * 24 * 3600;

std::atomic<unsigned long> mainThread{0};

}  // namespace

Unlocked::~Unlocked() {
#ifdef __GLIBCXX__
  try {
    PyEval_RestoreThread(thread);
  } catch (abi::__forced_unwind&) {
    for (;;) pause();
  }
#else
  PyEval_RestoreThread(thread);
#endif
}

Deadline::Deadline(std::optional<double> seconds) {
  const double asked = seconds.value_or(kLongestSeconds);
  if (std::isnan(asked)) throw py::value_error("a timeout must be a number");
  const double limited = std::clamp(asked, 0.0, kLongestSeconds);
  time = Clock::now() +
         std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(limited));
}

Milliseconds Deadline::Slice() const {
  const auto left = std::chrono::ceil<Milliseconds>(time - Clock::now());
  const bool isMain = PyThread_get_thread_ident() == mainThread;
  return std::max(Milliseconds(0), isMain ? std::min(left, kSignalSlice) : left);
}

void SetMainThread(unsigned long identifier) {
  mainThread = identifier;
}

void CheckSignals() {
  if (PyErr_CheckSignals() != 0) throw py::error_already_set();
}

}  // namespace kecpp::python
