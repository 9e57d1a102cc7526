// SPDX-License-Identifier: MIT
//
// One site of a fleet: a simulated daemon, its publisher, and changes of machines, each with a
// greater number in a name than the one before.
//
// Thread safety: none.
#ifndef KECPP_ENDURANCE_FLEETSITE_H
#define KECPP_ENDURANCE_FLEETSITE_H

#include <deque>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <random>
#include <string>

#include "fleet/EtcdClient.h"
#include "simulator/driver/Simulator.h"

namespace endurance {

class FleetSite {
 public:
  FleetSite(const std::string& name, int machines, const std::string& members, unsigned seed);

  void StartPublisher();
  driver::ChildProcess& Publisher() { return *publisher; }
  // Starts another publisher of the site and gives the one before, which must end with FENCED.
  std::unique_ptr<driver::ChildProcess> ReplacePublisher();
  static constexpr int FENCED = 3;

  driver::Simulator& Daemon() { return simulator; }
  // Renames, creates or removes a machine.
  void Change();
  unsigned long long Changes() const { return number; }

  // What is different between the daemon's truth and the cluster; empty: nothing.
  std::string Difference(kecpp::fleet::EtcdClient& client);

 private:
  using Properties = std::map<std::string, nlohmann::json>;  // by key in the cluster

  Properties Truth();

  const std::string name;
  const std::string members;
  driver::Simulator simulator;
  const std::string config;
  std::unique_ptr<driver::ChildProcess> publisher;
  std::mt19937 random;
  std::deque<std::string> machines;
  unsigned long long number = 0;
};

}  // namespace endurance

#endif
