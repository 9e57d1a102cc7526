// SPDX-License-Identifier: MIT
//
// What the system says of a process at a moment.
#ifndef KECPP_TESTS_SOAK_PROCESSSAMPLE_H
#define KECPP_TESTS_SOAK_PROCESSSAMPLE_H

#include <sys/types.h>

namespace soak {

struct ProcessSample {
  double at = 0;          // seconds since the run began; the caller's
  long residentKb = 0;    // memory in use
  long descriptors = 0;   // open files and sockets
  long threads = 0;       // all of them
  double cpuSeconds = 0;  // user and system time since its start, in steps of a clock tick
};

// Throws std::runtime_error when the process has ended.
ProcessSample SampleOf(pid_t pid);

}  // namespace soak

#endif
