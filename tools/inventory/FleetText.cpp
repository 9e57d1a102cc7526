// SPDX-License-Identifier: MIT
#include "tools/inventory/FleetText.h"

#include <ctime>
#include <map>
#include <nlohmann/json.hpp>
#include <utility>

#include "tools/common/ObjectJson.h"
#include "tools/inventory/FleetObjects.h"
#include "tools/inventory/ObjectTable.h"

namespace tools::inventory {
namespace {

using Json = nlohmann::ordered_json;
using Clock = std::chrono::system_clock;

std::string SiteTable(const kecpp::Fleet& fleet, const TableRoom& room) {
  TextTable table("Sites", {"SITE", "STATE", "AGE", "HOSTS", "MACHINES", "EPOCH"});
  for (const kecpp::Site& site : fleet.Sites()) {
    table.AddRow({site.name, StateWord(site), AgeWord(site, Clock::now()),
                  std::to_string(fleet.Count(site.name, kecpp::Kind::host)),
                  std::to_string(fleet.Count(site.name, kecpp::Kind::machine)),
                  std::to_string(site.epoch)});
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

Json SiteJson(const kecpp::Site& site) {
  return {{"site", site.name},
          {"state", site.state == kecpp::Site::State::complete ? "complete" : "syncing"},
          {"live", site.isLive},
          {"daemon", site.isConnected ? "connected" : "lost"},
          {"epoch", site.epoch},
          {"agent", site.agent},
          {"objects", site.objects},
          {"agreed", TimeJson(site.agreed)},
          {"asOf", TimeJson(site.asOf)}};
}

// Null when it has gone.
Json ObjectOf(const kecpp::FleetChange& change, const kecpp::Fleet& fleet) {
  if (!change.kind) {
    const auto site = fleet.FindSite(change.site);
    return site ? SiteJson(*site) : Json(nullptr);
  }
  const auto object = FindFleetObject(fleet, change.site, *change.kind, change.key);
  return object ? ObjectJson(KindRow(*change.kind), *object) : Json(nullptr);
}

}  // namespace

std::string FleetTables(const kecpp::Fleet& fleet, const Lists& lists, const TableRoom& room) {
  std::string text = SiteTable(fleet, room);
  std::map<std::pair<std::string, std::string>, std::string> hosts;  // names by site and key
  fleet.ForEach<kecpp::Host>([&](const std::string& site, const kecpp::Host& host) {
    hosts[{site, host.key}] = host.name;
  });
  for (const Kind* kind : lists) {
    ObjectTable table(*kind, true);
    ForEachObject(fleet, kind->kind, [&](const std::string& site, const Object& object) {
      const auto nameOf = [&](const std::string& key) {
        const auto found = hosts.find({site, key});
        return found == hosts.end() ? std::string() : found->second;
      };
      table.Add(object, nameOf, site);
    });
    text += '\n' + table.Format(room);
  }
  return text;
}

// Object by object: the whole as one JSON value would take several times its text.
std::string FleetJson(const kecpp::Fleet& fleet, const Lists& lists) {
  std::string text = "{\"sites\":[";
  const auto add = [&](const Json& item) {
    if (text.back() != '[') text += ',';
    text += LineOf(item);
  };
  for (const kecpp::Site& site : fleet.Sites()) add(SiteJson(site));
  for (const Kind* kind : lists) {
    text += std::string("],\"") + kind->name + "\":[";
    ForEachObject(fleet, kind->kind, [&](const std::string& site, const Object& object) {
      Json item = {{"site", site}};
      item.update(ObjectJson(*kind, object));
      add(item);
    });
  }
  return text += "]}\n";
}

std::string FleetEventLines(const std::vector<kecpp::FleetChange>& changes,
                            const kecpp::Fleet& fleet, const Lists& lists) {
  std::string lines;
  for (const kecpp::FleetChange& change : changes) {
    if (change.kind && !HasKind(lists, *change.kind)) continue;
    Json event = {{"change", WordFor(change.type)},
                  {"kind", change.kind ? kecpp::NameOf(*change.kind) : "site"},
                  {"site", change.site},
                  {"key", change.kind ? change.key : change.site}};
    if (change.type != kecpp::Change::Type::removed) {
      event["object"] = ObjectOf(change, fleet);
      if (event["object"].is_null()) continue;
    }
    lines += LineOf(event) + '\n';
  }
  return lines;
}

}  // namespace tools::inventory
