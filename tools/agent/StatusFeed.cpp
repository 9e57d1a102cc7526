// SPDX-License-Identifier: MIT
#include "tools/agent/StatusFeed.h"

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>
#include <thread>

#include "tools/agent/Errors.h"
#include "tools/common/CacheReader.h"
#include "tools/common/InventoryCopy.h"

namespace tools::agent {
namespace {

using Clock = std::chrono::steady_clock;
using Json = nlohmann::ordered_json;

constexpr std::chrono::milliseconds COPY_INTERVAL(500);
constexpr std::chrono::seconds HEARTBEAT(10);

std::string Raw(std::string_view xmlText) {
  KELib::KEString raw;
  KELib::Xml::DecodeEntities(std::string(xmlText).c_str(), raw);
  return raw.Cstr();
}

// Names come from the daemon and may hold anything, broken UTF-8 included.
std::string Dump(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

// One object's values, by name.
class Object {
 public:
  Object(const Rows& allRows, std::size_t itsRow) : rows(allRows), row(itsRow) {}

  std::string_view Key() const { return rows.Key(row); }
  std::string_view Stored(const char* name) const {
    return rows.Value(row, rows.ColumnOf(name)).value_or("");
  }
  std::string Text(const char* name) const { return Raw(Stored(name)); }
  std::vector<std::string_view> List(const char* name) const { return Items(Stored(name)); }
  unsigned long Status() const {
    return std::stoul(std::string(List("OperationalStatus").front()));
  }

 private:
  const Rows& rows;
  const std::size_t row;
};

StatusRow Row(const char* kind, const Object& object, Json json) {
  const std::string id = std::string(kind) + " " + std::string(object.Key());
  json["id"] = id;
  json["kind"] = kind;
  json["key"] = Raw(object.Key());
  return {id, Dump(json)};
}

StatusRow HostRow(const Object& host) {
  return Row("host", host,
             {{"name", host.Text("ElementName")},
              {"status", host.Status()},
              {"details", host.Text("Vendor") + " " + host.Text("Model")},
              {"machines", host.List("machines").size()}});
}

using HostNames = std::map<std::string_view, std::string>;

StatusRow MachineRow(const Object& machine, const HostNames& hostNames) {
  const auto host = hostNames.find(machine.Stored("host"));
  return Row("machine", machine,
             {{"name", machine.Text("ElementName")},
              {"status", machine.Status()},
              {"power", machine.Text("PowerState")},
              {"host", host == hostNames.end() ? "" : host->second},
              {"details", machine.Text("GuestFullName")},
              {"address", machine.Text("GuestIPAddress")}});
}

const Kind& Hosts() {
  return *FindKind("hosts");
}
const Kind& Machines() {
  return *FindKind("machines");
}

StatusRows RowsOf(const InventoryCopy& inventory) {
  StatusRows all;
  HostNames hostNames;
  const Rows& hosts = inventory.Of(Hosts());
  for (std::size_t row = 0; row < hosts.Count(); ++row) {
    const Object host(hosts, row);
    hostNames[host.Key()] = host.Text("ElementName");
    all.push_back(HostRow(host));
  }
  const Rows& machines = inventory.Of(Machines());
  for (std::size_t row = 0; row < machines.Count(); ++row) {
    all.push_back(MachineRow(Object(machines, row), hostNames));
  }
  std::sort(all.begin(), all.end(),
            [](const StatusRow& a, const StatusRow& b) { return a.id < b.id; });
  return all;
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

// The rows after so many reports, or later. Pages that waited while one of them copied find that
// copy new enough: each of them would take another half second to make its own.
std::shared_ptr<const StatusRows> StatusFeed::Rows(unsigned long long reports) {
  std::lock_guard<std::mutex> lock(mutex);
  if (reports <= reportsCopied) return rows;
  std::this_thread::sleep_until(copiedAt + COPY_INTERVAL);
  const DaemonReport report = state.Report();
  if (!report.connected) return rows;  // the last known ones
  try {
    InventoryCopy now;
    gate.Read([&](const Caches& caches) {
      now = ReadInventory(*caches.cache, {&Hosts(), &Machines()});
    });
    rows = std::make_shared<StatusRows>(RowsOf(now));
    reportsCopied = report.times;
    copiedAt = Clock::now();
  } catch (const NotReady&) {  // lost just now
  }
  return rows;
}

}  // namespace tools::agent
