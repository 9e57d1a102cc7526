// SPDX-License-Identifier: MIT
#include "tools/inventory/FleetText.h"

#include <ctime>
#include <map>
#include <nlohmann/json.hpp>
#include <tuple>
#include <utility>

#include "tools/common/ObjectJson.h"
#include "tools/inventory/FleetObjects.h"
#include "tools/inventory/ObjectTable.h"

namespace tools::inventory {
namespace {

using Json = nlohmann::ordered_json;
using Clock = std::chrono::system_clock;

// The first columns of all tables.
std::vector<std::string> OwnerHeadings(const Clusters& clusters) {
  if (clusters.size() == 1) return {"SITE"};
  return {"SITE", "CLUSTER"};
}
std::vector<std::string> OwnerCells(const PlacedSite& at) {
  if (at.cluster->name.empty()) return {at.site.name};
  return {at.site.name, at.cluster->name};
}

std::vector<std::string> Joined(std::vector<std::string> first,
                                const std::vector<std::string>& then) {
  first.insert(first.end(), then.begin(), then.end());
  return first;
}

std::string SiteTable(const Clusters& clusters, const TableRoom& room) {
  TextTable table("Sites",
                  Joined(OwnerHeadings(clusters), {"STATE", "AGE", "HOSTS", "MACHINES", "EPOCH"}));
  for (const PlacedSite& at : AllSites(clusters)) {
    const auto count = [&](kecpp::Kind kind) {
      return std::to_string(at.cluster->fleet->Count(at.site.name, kind));
    };
    table.AddRow(Joined(OwnerCells(at), {StateWord(at.site), AgeWord(at.site, Clock::now()),
                                         count(kecpp::Kind::host), count(kecpp::Kind::machine),
                                         std::to_string(at.site.epoch)}));
  }
  return table.Format(room);
}

// Null for the epoch.
Json TimeJson(Clock::time_point time) {
  const std::time_t seconds = Clock::to_time_t(time);
  if (seconds == 0) return nullptr;
  std::tm parts{};
  gmtime_r(&seconds, &parts);
  char text[40];
  return std::string(text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts));
}

// Whose something is.
Json OwnerJson(const std::string& site, const Cluster& cluster) {
  Json owner = {{"site", site}};
  if (!cluster.name.empty()) owner["cluster"] = cluster.name;
  return owner;
}

Json SiteJson(const kecpp::Site& site, const Cluster& cluster) {
  Json json = OwnerJson(site.name, cluster);
  json.update({{"state", site.state == kecpp::Site::State::complete ? "complete" : "syncing"},
               {"live", site.isLive},
               {"daemon", site.isConnected ? "connected" : "lost"},
               {"epoch", site.epoch},
               {"agent", site.agent},
               {"objects", site.objects},
               {"agreed", TimeJson(site.agreed)},
               {"asOf", TimeJson(site.asOf)}});
  return json;
}

// Null when it has gone.
Json ObjectOf(const kecpp::FleetChange& change, const Cluster& cluster) {
  if (!change.kind) {
    const auto site = cluster.fleet->FindSite(change.site);
    return site ? SiteJson(*site, cluster) : Json(nullptr);
  }
  const auto object = FindFleetObject(*cluster.fleet, change.site, *change.kind, change.key);
  return object ? ObjectJson(KindRow(*change.kind), *object) : Json(nullptr);
}

}  // namespace

std::string FleetTables(const Clusters& clusters, const Lists& lists, const TableRoom& room) {
  std::string text = SiteTable(clusters, room);
  // Names by cluster, site and key.
  std::map<std::tuple<const Cluster*, std::string, std::string>, std::string> hosts;
  for (const Cluster& cluster : clusters) {
    cluster.fleet->ForEach<kecpp::Host>([&](const std::string& site, const kecpp::Host& host) {
      hosts[{&cluster, site, host.key}] = host.name;
    });
  }
  for (const Kind* kind : lists) {
    ObjectTable table(*kind, OwnerHeadings(clusters));
    ForEachObject(clusters, kind->kind, [&](const PlacedSite& at, const Object& object) {
      const auto nameOf = [&](const std::string& key) {
        const auto found = hosts.find({at.cluster, at.site.name, key});
        return found == hosts.end() ? std::string() : found->second;
      };
      table.Add(object, nameOf, OwnerCells(at));
    });
    text += '\n' + table.Format(room);
  }
  return text;
}

// Object by object: the whole as one JSON value would take several times its text.
std::string FleetJson(const Clusters& clusters, const Lists& lists) {
  std::string text = "{\"sites\":[";
  const auto add = [&](const Json& item) {
    if (text.back() != '[') text += ',';
    text += LineOf(item);
  };
  for (const PlacedSite& at : AllSites(clusters)) add(SiteJson(at.site, *at.cluster));
  for (const Kind* kind : lists) {
    text += std::string("],\"") + kind->name + "\":[";
    ForEachObject(clusters, kind->kind, [&](const PlacedSite& at, const Object& object) {
      Json item = OwnerJson(at.site.name, *at.cluster);
      item.update(ObjectJson(*kind, object));
      add(item);
    });
  }
  return text += "]}\n";
}

std::string FleetEventLines(const std::vector<kecpp::FleetChange>& changes, const Cluster& cluster,
                            const Lists& lists) {
  std::string lines;
  for (const kecpp::FleetChange& change : changes) {
    if (change.kind && !HasKind(lists, *change.kind)) continue;
    Json event = {{"change", WordFor(change.type)},
                  {"kind", change.kind ? kecpp::NameOf(*change.kind) : "site"}};
    event.update(OwnerJson(change.site, cluster));
    event["key"] = change.kind ? change.key : change.site;
    if (change.type != kecpp::Change::Type::removed) {
      event["object"] = ObjectOf(change, cluster);
      if (event["object"].is_null()) continue;
    }
    lines += LineOf(event) + '\n';
  }
  return lines;
}

}  // namespace tools::inventory
