// SPDX-License-Identifier: MIT
//
// The tool's two ways to show a fleet: once, and following its changes.
#ifndef KECPP_TOOLS_INVENTORY_FLEETRUN_H
#define KECPP_TOOLS_INVENTORY_FLEETRUN_H

#include <kecpp/fleet.h>

#include <chrono>
#include <list>
#include <string>

#include "tools/common/EndOfRun.h"
#include "tools/inventory/FleetObjects.h"
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
  bool TakeChanges(std::chrono::milliseconds limit);
  void ShowAll();
  void ReportState();

  // A cluster that is read. They are read side by side.
  struct Reading {
    explicit Reading(const kecpp::FleetOptions& options);
    void AwaitFirstData(const EndOfRun& end);
    void ReportState();

    const kecpp::FleetOptions& options;
    const kecpp::Fleet fleet;
    kecpp::FleetFollower follower;
    LossReport loss{"cluster"};
    unsigned long long reportedSkipped = 0;
  };

  const Options& options;
  const EndOfRun& end;
  View view;
  std::list<Reading> readings;
  Clusters clusters;
  std::chrono::steady_clock::time_point shown;  // the last time, and how long it took
  std::chrono::steady_clock::duration took{0};
};

}  // namespace tools::inventory

#endif
