// SPDX-License-Identifier: MIT
//
// An endurance run: a rest, a time of changes and faults, a rest; then the judgement.
#ifndef KECPP_TESTS_SOAK_SOAK_H
#define KECPP_TESTS_SOAK_SOAK_H

#include <cstdint>

namespace soak {

struct Plan {
  double minutes = 60;  // the whole run
  std::uint64_t seed = 1;
};

// Prints a table and a summary. True when no bound was breached. Throws std::exception when the
// programs cannot be run or the tool ends early.
bool Soak(const Plan& plan);

}  // namespace soak

#endif
