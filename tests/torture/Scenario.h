// SPDX-License-Identifier: MIT
//
// The life of one service instance: login, first fill, an update, a failed cycle, the end of the
// watches, shutdown. A step that fails is repeated once without refusals and must succeed then.
#ifndef KECPP_TESTS_TORTURE_SCENARIO_H
#define KECPP_TESTS_TORTURE_SCENARIO_H

#include <string>
#include <vector>

#include "simulator/driver/Simulator.h"

namespace torture {

// What a run has shown.
struct Findings {
  std::string errors;                   // texts that the library reported, exceptions first
  std::vector<std::string> complaints;  // what must not be
  bool orphaned = false;                // the server still has the session: its logout was lost
};

// Runs it once. Throws std::runtime_error when it cannot go on. One thread at a time.
Findings RunScenario(driver::Simulator& simulator);

}  // namespace torture

#endif
