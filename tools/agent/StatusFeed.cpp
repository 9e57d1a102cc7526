// SPDX-License-Identifier: MIT
#include "tools/agent/StatusFeed.h"

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>
#include <thread>

#include "tools/agent/Errors.h"
#include "tools/common/CacheReader.h"
#include "tools/common/InventoryCopy.h"

namespace cimxml {
namespace {

using Clock = std::chrono::steady_clock;
using Json = nlohmann::ordered_json;

constexpr std::chrono::milliseconds COPY_INTERVAL(500);
constexpr std::chrono::seconds HEARTBEAT(10);

std::string Raw(const std::string& xmlText) {
  KELib::KEString raw;
  KELib::Xml::DecodeEntities(xmlText.c_str(), raw);
  return raw.Cstr();
}

// Names come from the daemon and may hold anything, broken UTF-8 included.
std::string Dump(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

StatusRow Row(const char* kind, const std::string& key, Json json) {
  const std::string id = std::string(kind) + " " + key;
  json["id"] = id;
  json["kind"] = kind;
  json["key"] = Raw(key);
  return {id, Dump(json)};
}

StatusRow RowOf(const tools::Host& host) {
  return Row("host", host.name,
             {{"name", Raw(host.elementName)},
              {"status", host.operationalStatus},
              {"details", Raw(host.vendor) + " " + Raw(host.model)},
              {"machines", host.machines.size()}});
}

using HostNames = std::map<std::string, std::string>;

StatusRow RowOf(const tools::Machine& machine, const HostNames& hostNames) {
  const auto host = machine.host ? hostNames.find(*machine.host) : hostNames.end();
  return Row("machine", machine.name,
             {{"name", Raw(machine.elementName)},
              {"status", machine.operationalStatus},
              {"power", Raw(machine.powerState)},
              {"host", host == hostNames.end() ? "" : host->second},
              {"details", Raw(machine.guestFullName)},
              {"address", Raw(machine.guestIPAddress)}});
}

StatusRows RowsOf(const tools::Systems& systems) {
  StatusRows rows;
  HostNames hostNames;
  for (const auto& host : systems.hosts) {
    hostNames[host.name] = Raw(host.elementName);
    rows.push_back(RowOf(host));
  }
  for (const auto& machine : systems.machines) rows.push_back(RowOf(machine, hostNames));
  std::sort(rows.begin(), rows.end(),
            [](const StatusRow& a, const StatusRow& b) { return a.id < b.id; });
  return rows;
}

// What turns `before` into `now`: rows that are new or differ, and the ids of those that have gone.
class Difference {
 public:
  Difference(const StatusRows& before, const StatusRows& now) {
    auto old = before.begin();
    for (const StatusRow& row : now) {
      for (; old != before.end() && old->id < row.id; ++old) AddGone(old->id);
      const bool known = old != before.end() && old->id == row.id;
      if (!known || old->json != row.json) AddSet(row.json);
      if (known) ++old;
    }
    for (; old != before.end(); ++old) AddGone(old->id);
  }

  bool IsEmpty() const { return set.empty() && gone.empty(); }
  std::string Event() const {
    return "event: rows\ndata: {\"set\":[" + set + "],\"gone\":[" + gone + "]}\n\n";
  }

 private:
  void AddSet(const std::string& json) { set += (set.empty() ? "" : ",") + json; }
  void AddGone(const std::string& id) { gone += (gone.empty() ? "" : ",") + Dump(Json(id)); }

  std::string set;
  std::string gone;
};

std::string StateEvent(const DaemonReport& report) {
  const Json json = {{"connected", report.connected},
                     {"sets", report.sets},
                     {"failures", report.consecutiveFailures},
                     {"connections", report.connections},
                     {"lastUpdate", report.lastUpdate},
                     {"lastFailure", report.lastFailure},
                     {"lastFailureText", report.lastFailureText},
                     {"version", report.version},
                     {"agent", KELib::Version()}};
  return "event: state\ndata: " + Dump(json) + "\n\n";
}

}  // namespace

StatusFeed::StatusFeed(CacheGate& cacheGate, DaemonState& daemonState)
    : gate(cacheGate), state(daemonState), rows(std::make_shared<StatusRows>()) {}

std::string StatusFeed::Next(View& view) {
  const bool first = !view.rows;
  if (first) {
    view.rows = std::make_shared<StatusRows>();
    state.WaitForChange(view.seen, std::chrono::milliseconds(0));
  } else if (!state.WaitForChange(view.seen, HEARTBEAT)) {
    return state.Ended() ? "" : ": nothing new\n\n";
  }
  std::shared_ptr<const StatusRows> now = Rows(view.seen);
  const Difference difference(*view.rows, *now);
  view.rows = std::move(now);
  return StateEvent(state.Report()) + (difference.IsEmpty() ? "" : difference.Event());
}

// The rows after so many reports, or later. The pages that wait while one of them copies find a
// copy that is new enough, so that each of them does not take another half second.
std::shared_ptr<const StatusRows> StatusFeed::Rows(unsigned long long reports) {
  std::lock_guard<std::mutex> lock(mutex);
  if (reports <= reportsCopied) return rows;
  std::this_thread::sleep_until(copiedAt + COPY_INTERVAL);
  const DaemonReport report = state.Report();
  if (!report.connected) return rows;  // the last known ones
  try {
    tools::Systems systems;
    gate.Read([&](const Caches& caches) { systems = tools::ReadSystems(*caches.cache); });
    rows = std::make_shared<StatusRows>(RowsOf(systems));
    reportsCopied = report.times;
    copiedAt = Clock::now();
  } catch (const NotReady&) {  // lost just now
  }
  return rows;
}

}  // namespace cimxml
