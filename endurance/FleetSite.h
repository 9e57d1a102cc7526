// SPDX-License-Identifier: MIT
//
// One site of a fleet: a simulated daemon, its publisher, and changes of machines, each with a
// greater number in a name than the one before.
//
// Thread safety: none.
#ifndef KECPP_ENDURANCE_FLEETSITE_H
#define KECPP_ENDURANCE_FLEETSITE_H

#include <deque>
#include <memory>
#include <random>
#include <string>

#include "endurance/FleetCopy.h"
#include "endurance/FleetMonitor.h"
#include "fleet/EtcdClient.h"
#include "simulator/driver/Lines.h"
#include "simulator/driver/Simulator.h"

namespace endurance {

// A publisher, and the lines on which it talks to the cluster.
struct Publication {
  explicit Publication(const std::string& members) : lines(members) {}

  driver::Lines lines;
  std::unique_ptr<driver::ChildProcess> process;
};

class FleetSite {
 public:
  FleetSite(const std::string& name, int machines, const std::string& members, unsigned seed);

  void StartPublisher();
  driver::ChildProcess& Publisher() { return *publication->process; }
  driver::Lines& Lines() { return publication->lines; }
  // Starts another publisher of the site and gives the one before, which must end with FENCED.
  std::unique_ptr<Publication> ReplacePublisher();
  static constexpr int FENCED = 3;

  driver::Simulator& Daemon() { return simulator; }
  // Renames, creates or removes a machine.
  void Change(FleetMonitor& monitor);
  unsigned long long Changes() const { return number; }

  // What is different between the daemon's truth, the cluster and a reader's copy of it; empty:
  // nothing.
  std::string Difference(kecpp::fleet::EtcdClient& client, const FleetCopy& copy);

 private:
  SiteContent Truth();
  SiteContent InCluster(kecpp::fleet::EtcdClient& client) const;

  const std::string name;
  const std::string members;
  driver::Simulator simulator;
  const std::string config;
  std::unique_ptr<Publication> publication;
  std::mt19937 random;
  std::deque<std::string> machines;
  unsigned long long number = 0;
};

}  // namespace endurance

#endif
