// SPDX-License-Identifier: MIT
//
// How many machines there are by power state and by host, and how many hosts by status, kept by
// what changes: asking again costs what changed since, not what there is. The first question reads
// all.
//
// Thread safety: one thread at a time.
#ifndef KECPP_TOOLS_AGENT_METRICS_INVENTORYCOUNTS_H
#define KECPP_TOOLS_AGENT_METRICS_INVENTORYCOUNTS_H

#include <kecpp/inventory.h>

#include <array>
#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>

namespace tools::agent {

class InventoryCounts {
 public:
  // The inventory outlives the object.
  explicit InventoryCounts(const kecpp::Inventory& inventory);

  // Takes in what changed.
  void Update();

  struct Host {
    unsigned status = 0;
    std::string name;
    std::size_t machines = 0;
    bool isThere = false;  // a machine may name a host that is not known
  };

  // By key.
  using ByKey = std::map<std::string, Host>;
  const ByKey& Hosts() const { return hosts; }

  std::size_t Machines(kecpp::PowerState power) const {
    return byPower[static_cast<std::size_t>(power)];
  }

 private:
  struct Machine {
    kecpp::PowerState power = kecpp::PowerState::unknown;
    ByKey::iterator host;  // the end for none
  };

  void Begin();
  void Take(const kecpp::Change& change);
  void TakeHost(const std::string& key);
  void TakeMachine(const std::string& key);
  void Count(const Machine& machine, bool isThere);
  void EraseIfUnused(ByKey::iterator host);

  const kecpp::Inventory& inventory;
  kecpp::Follower changes;
  ByKey hosts;
  std::unordered_map<std::string, Machine> machines;
  std::array<std::size_t, 4> byPower = {};
};

}  // namespace tools::agent

#endif
