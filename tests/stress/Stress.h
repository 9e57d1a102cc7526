// SPDX-License-Identifier: MIT
//
// The whole play: service instances are created, used by many threads at once, logged out and in,
// and freed or replaced, while the daemon changes its inventory and loses answers. The caches equal
// the truth at the end of each instance's life.
#ifndef KECPP_TESTS_STRESS_STRESS_H
#define KECPP_TESTS_STRESS_STRESS_H

#include <chrono>

#include "stress/Tally.h"

namespace stress {

struct Plan {
  std::chrono::seconds duration{10};
  std::chrono::milliseconds patience{30000};  // of the watchdog
  bool holdsForEver = false;                  // one actor takes the machines' mutex and keeps it
};

// Throws std::exception when the simulated daemon cannot be run. Does not return when the watchdog
// finds somebody stuck.
void Play(const Plan& plan, Tally& tally);

}  // namespace stress

#endif
