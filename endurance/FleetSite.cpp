// SPDX-License-Identifier: MIT
#include "endurance/FleetSite.h"

#include <algorithm>
#include <utility>

#include "endurance/FleetMonitor.h"
#include "endurance/Replay.h"
#include "fleet/Keys.h"

namespace endurance {
namespace {

using driver::Json;

struct ListRow {
  const char* list;
  kecpp::Kind kind;
  const char* key;
  const char* derived;  // a link that is not published
};
constexpr ListRow LISTS[] = {{"hosts", kecpp::Kind::host, "Name", "machines"},
                             {"machines", kecpp::Kind::machine, "Name", nullptr},
                             {"roles", kecpp::Kind::role, "Name", "identities"},
                             {"privileges", kecpp::Kind::privilege, "InstanceID", "roles"},
                             {"identities", kecpp::Kind::identity, "InstanceID", nullptr}};

}  // namespace

FleetSite::FleetSite(const std::string& siteName, int count, const std::string& cluster,
                     unsigned seed)
    : name(siteName),
      members(cluster),
      simulator(
          {"--hosts", "3", "--machines", std::to_string(count), "--seed", std::to_string(seed)}),
      config(simulator.ConfigFile(simulator.Config())),
      random(seed) {
  const Json truth = simulator.Truth();
  for (const Json& machine : truth["machines"]) {
    machines.push_back(machine["Name"].get<std::string>());
  }
  StartPublisher();
}

void FleetSite::StartPublisher() {
  publisher = std::make_unique<driver::ChildProcess>(std::vector<std::string>{
      KECPP_PUBLISH_PROGRAM, "--config", config, "--site", name, "--to", members});
}

std::unique_ptr<driver::ChildProcess> FleetSite::ReplacePublisher() {
  auto before = std::move(publisher);
  StartPublisher();
  return before;
}

void FleetSite::Change() {
  const std::size_t which = random() % machines.size();
  const std::string numbered = FleetMonitor::NameOf(++number);
  switch (random() % 20) {
    case 0: {
      const Json made =
          simulator.Control("machine", {{"do", "create"}, {"name", numbered}, {"host", "host-1"}});
      machines.push_back(made["id"].get<std::string>());
      return;
    }
    case 1:
      if (machines.size() < 5) return;
      simulator.Control("machine", {{"do", "remove"}, {"id", machines[which]}});
      machines.erase(machines.begin() + static_cast<std::ptrdiff_t>(which));
      return;
    default:
      simulator.SetMachine(machines[which], "name", numbered);
  }
}

FleetSite::Properties FleetSite::Truth() {
  Properties truth;
  const Json stored = Decoded(simulator.Truth());
  for (const ListRow& row : LISTS) {
    for (Json object : stored[row.list]) {
      if (row.derived != nullptr) object.erase(row.derived);
      truth[kecpp::fleet::ObjectPart(row.kind, object[row.key].get<std::string>())] = object;
    }
  }
  return truth;
}

std::string FleetSite::Difference(kecpp::fleet::EtcdClient& client) {
  const std::string prefix = kecpp::fleet::ObjectsOf(name);
  Properties there;
  ReadPrefix(client, prefix, [&](kecpp::fleet::KeyValue&& entry) {
    there[entry.key.substr(prefix.size())] =
        Json::parse(entry.value, nullptr, false).value("properties", Json());
  });
  const Properties truth = Truth();
  if (there == truth) return {};
  std::string text = name + ": " + std::to_string(there.size()) + " objects, " +
                     std::to_string(truth.size()) + " true ones;";
  int shown = 0;
  for (const auto& [key, value] : truth) {
    const auto found = there.find(key);
    if (found != there.end() && found->second == value) continue;
    if (++shown > 3) break;
    text += ' ' + key + (found == there.end() ? " is missing" : " differs");
  }
  for (const auto& [key, value] : there) {
    if (truth.count(key) == 0 && ++shown < 6) text += ' ' + key + " is too many";
  }
  return text;
}

}  // namespace endurance
