// SPDX-License-Identifier: MIT
#include "tools/agent/metrics/InventoryCounts.h"

namespace tools::agent {

InventoryCounts::InventoryCounts(const kecpp::Inventory& counted)
    : inventory(counted), changes(counted.Follow()) {}

void InventoryCounts::Update() {
  if (changes.Closed()) Begin();
  for (auto some = changes.Next(); !some.empty(); some = changes.Next()) {
    for (const kecpp::Change& change : some) Take(change);
  }
}

void InventoryCounts::Begin() {
  hosts.clear();
  machines.clear();
  byPower = {};
  changes = inventory.Follow();
}

// What the change says may be over by now: the object is looked at as it is.
void InventoryCounts::Take(const kecpp::Change& change) {
  if (change.kind == kecpp::Kind::host) TakeHost(change.key);
  if (change.kind == kecpp::Kind::machine) TakeMachine(change.key);
}

void InventoryCounts::TakeHost(const std::string& key) {
  const auto host = hosts.try_emplace(key).first;
  std::string name;
  host->second.isThere = inventory.Look<kecpp::HostView>(key, [&](const kecpp::HostView& view) {
    host->second.status = view.operationalStatus;
    name = view.name;
  });
  host->second.name = kecpp::Decode(name);
  EraseIfUnused(host);
}

void InventoryCounts::TakeMachine(const std::string& key) {
  Machine now;
  std::string hostKey;
  const bool isThere = inventory.Look<kecpp::MachineView>(key, [&](const kecpp::MachineView& view) {
    now.power = view.powerState;
    if (view.host) hostKey = *view.host;
  });
  now.host = hostKey.empty() ? hosts.end() : hosts.try_emplace(kecpp::Decode(hostKey)).first;
  if (isThere) Count(now, true);
  const auto known = machines.find(key);
  if (known != machines.end()) Count(known->second, false);
  if (isThere) {
    machines.insert_or_assign(key, now);
  } else if (known != machines.end()) {
    machines.erase(known);
  }
}

void InventoryCounts::Count(const Machine& machine, bool isThere) {
  const std::size_t one = isThere ? 1 : -std::size_t{1};
  byPower[static_cast<std::size_t>(machine.power)] += one;
  if (machine.host == hosts.end()) return;
  machine.host->second.machines += one;
  EraseIfUnused(machine.host);
}

// A machine may name a host that is not known, or not any more.
void InventoryCounts::EraseIfUnused(ByKey::iterator host) {
  if (!host->second.isThere && host->second.machines == 0) hosts.erase(host);
}

}  // namespace tools::agent
