// SPDX-License-Identifier: MIT
#include "endurance/FleetSite.h"

#include <algorithm>
#include <utility>

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

// What a publisher has to say of it.
SiteContent WithoutDerivedLinks(SiteContent content) {
  for (auto& [part, object] : content) {
    for (const ListRow& row : LISTS) {
      const bool isOfKind = kecpp::fleet::ParseObjectPart(part)->kind == row.kind;
      if (isOfKind && row.derived != nullptr) object.erase(row.derived);
    }
  }
  return content;
}

std::string DifferenceOf(const SiteContent& truth, const SiteContent& there, const char* where) {
  if (there == truth) return {};
  std::string text = " " + std::to_string(there.size()) + " objects in " + where + ", " +
                     std::to_string(truth.size()) + " true ones;";
  int shown = 0;
  for (const auto& [part, value] : truth) {
    const auto found = there.find(part);
    if (found != there.end() && found->second == value) continue;
    if (++shown > 3) break;
    text += ' ' + part + (found == there.end() ? " is missing" : " differs");
  }
  for (const auto& [part, value] : there) {
    if (truth.count(part) == 0 && ++shown < 6) text += ' ' + part + " is too many";
  }
  return text + '\n';
}

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
  publication = std::make_unique<Publication>(members);
  publication->process = std::make_unique<driver::ChildProcess>(
      std::vector<std::string>{KECPP_PUBLISH_PROGRAM, "--config", config, "--site", name, "--to",
                               publication->lines.Urls()});
}

std::unique_ptr<Publication> FleetSite::ReplacePublisher() {
  auto before = std::move(publication);
  StartPublisher();
  return before;
}

void FleetSite::Change(FleetMonitor& monitor) {
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
      monitor.ExpectRemoval(kecpp::fleet::ObjectsOf(name) +
                            kecpp::fleet::ObjectPart(kecpp::Kind::machine, machines[which]));
      simulator.Control("machine", {{"do", "remove"}, {"id", machines[which]}});
      machines.erase(machines.begin() + static_cast<std::ptrdiff_t>(which));
      return;
    default:
      simulator.SetMachine(machines[which], "name", numbered);
  }
}

SiteContent FleetSite::Truth() {
  SiteContent truth;
  const Json stored = Decoded(simulator.Truth());
  for (const ListRow& row : LISTS) {
    for (const Json& object : stored[row.list]) {
      truth[kecpp::fleet::ObjectPart(row.kind, object[row.key].get<std::string>())] = object;
    }
  }
  return truth;
}

SiteContent FleetSite::InCluster(kecpp::fleet::EtcdClient& client) const {
  const std::string prefix = kecpp::fleet::ObjectsOf(name);
  SiteContent there;
  ReadPrefix(client, prefix, [&](kecpp::fleet::KeyValue&& entry) {
    there[entry.key.substr(prefix.size())] =
        Json::parse(entry.value, nullptr, false).value("properties", Json());
  });
  return there;
}

std::string FleetSite::Difference(kecpp::fleet::EtcdClient& client, const FleetCopy& copy) {
  const SiteContent truth = Truth();
  const std::string text =
      DifferenceOf(WithoutDerivedLinks(truth), InCluster(client), "the cluster") +
      DifferenceOf(truth, copy.Of(name), "the reader's copy");
  return text.empty() ? text : name + ':' + text;
}

}  // namespace endurance
