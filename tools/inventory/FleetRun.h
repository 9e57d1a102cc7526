// SPDX-License-Identifier: MIT
//
// The tool's two ways to show a fleet: once, and following its changes.
#ifndef KECPP_TOOLS_INVENTORY_FLEETRUN_H
#define KECPP_TOOLS_INVENTORY_FLEETRUN_H

#include <kecpp/fleet.h>

#include <chrono>
#include <string>

#include "tools/common/EndOfRun.h"
#include "tools/inventory/LossReport.h"
#include "tools/inventory/Options.h"
#include "tools/inventory/View.h"

namespace tools::inventory {

class FleetRun {
 public:
  // Connects and reads everything. The arguments outlive the run. Throws kecpp::Error.
  FleetRun(const Options& options, const EndOfRun& end);

  void ShowOnce();

  // Goes on after ShowOnce: shows every change until the end of the run, several at once when they
  // come faster than they can be shown. A lost cluster is reported on standard error.
  void Follow();

 private:
  void AwaitFirstData();
  bool TakeChanges(std::chrono::milliseconds limit);
  void ShowAll();
  void ReportState();

  const Options& options;
  const EndOfRun& end;
  View view;
  const kecpp::Fleet fleet;
  kecpp::FleetFollower follower;
  std::chrono::steady_clock::time_point shown;  // the last time, and how long it took
  std::chrono::steady_clock::duration took{0};
  LossReport loss{"cluster"};
  unsigned long long reportedSkipped = 0;
};

}  // namespace tools::inventory

#endif
