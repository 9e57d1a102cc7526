// SPDX-License-Identifier: MIT
#include "tools/agent/StatusFeed.h"

#include <nlohmann/json.hpp>
#include <optional>
#include <thread>

namespace tools::agent {
namespace {

using Clock = std::chrono::steady_clock;
using Json = nlohmann::ordered_json;

constexpr std::chrono::milliseconds SLICE(200);  // a new state and the end wake nobody
constexpr std::chrono::milliseconds REST(100);
constexpr std::chrono::seconds HEARTBEAT(10);
constexpr std::size_t MOST_CHANGES = 1000;

// Names come from the daemon and may hold anything, broken UTF-8 included.
std::string Dump(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

// Without the keys of its machines, which may be thousands.
std::optional<Json> HostRow(const kecpp::Inventory& inventory, const std::string& key) {
  std::string name, vendor, model;
  unsigned status = 0;
  std::size_t machines = 0;
  const bool found = inventory.Look<kecpp::HostView>(key, [&](const kecpp::HostView& host) {
    name = host.name;
    vendor = host.vendor;
    model = host.model;
    status = host.operationalStatus;
    machines = host.machines.size();
  });
  if (!found) return {};
  return Json{{"name", kecpp::Decode(name)},
              {"status", status},
              {"details", kecpp::Decode(vendor) + " " + kecpp::Decode(model)},
              {"machines", machines}};
}

// The page knows the host's name.
std::optional<Json> MachineRow(const kecpp::Inventory& inventory, const std::string& key) {
  const auto machine = inventory.FindMachine(key);
  if (!machine) return {};
  return Json{{"name", machine->name},
              {"status", machine->operationalStatus},
              {"power", machine->powerStateText},
              {"host", machine->host.value_or("")},
              {"details", machine->guestFullName},
              {"address", machine->guestIPAddress}};
}

// What an object that was added or changed is now; nothing when it has gone since.
std::optional<Json> Row(const kecpp::Inventory& inventory, const kecpp::Change& change) {
  return change.kind == kecpp::Kind::host ? HostRow(inventory, change.key)
                                          : MachineRow(inventory, change.key);
}

bool IsShown(const kecpp::Change& change) {
  return change.kind == kecpp::Kind::host || change.kind == kecpp::Kind::machine;
}

// A list of JSON values, as text.
class List {
 public:
  void Add(const Json& value) { text += (text.empty() ? "" : ",") + Dump(value); }
  bool IsEmpty() const { return text.empty(); }
  std::string Text() const { return "[" + text + "]"; }

 private:
  std::string text;
};

long long Milliseconds(std::chrono::system_clock::time_point time) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch()).count();
}

// The later one of what this connection met and what ended one before.
Failure LastFailure(const kecpp::Status& status, const ConnectionReport& report) {
  Failure last = report.LastFailure();
  if (!status.lastFailure.empty() && status.lastFailureTime > last.time) {
    last = {status.lastFailure, status.lastFailureTime};
  }
  return last;
}

}  // namespace

StatusFeed::StatusFeed(const kecpp::Inventory& shown, const ConnectionReport& connectionReport)
    : inventory(shown), report(connectionReport) {}

std::string StatusFeed::Next(View& view) const {
  const auto heartbeat = Clock::now() + HEARTBEAT;
  while (!ended && !view.changes.Closed()) {
    std::this_thread::sleep_until(view.rest);
    const bool hasChanges =
        view.changes.Wait(view.state.empty() ? std::chrono::milliseconds(0) : SLICE);
    std::string events = StateNews(view) + (hasChanges ? RowNews(view) : "");
    if (!events.empty()) return events;
    if (Clock::now() > heartbeat) return ": nothing new\n\n";
  }
  return {};
}

std::string StatusFeed::StateNews(View& view) const {
  const kecpp::Status status = inventory.State();
  const Failure failure = LastFailure(status, report);
  const Json json = {{"connected", status.state == kecpp::Status::State::connected},
                     {"sets", status.updates},
                     {"failures", status.failures},
                     {"connections", status.connections},
                     {"lastUpdate", Milliseconds(status.lastUpdate)},
                     {"lastFailure", Milliseconds(failure.time)},
                     {"lastFailureText", failure.text},
                     {"version", status.version},
                     {"agent", kecpp::Version()}};
  std::string event = "event: state\ndata: " + Dump(json) + "\n\n";
  if (event == view.state) return {};
  view.state = event;
  return event;
}

std::string StatusFeed::RowNews(View& view) const {
  const std::vector<kecpp::Change> changes = view.changes.Next(MOST_CHANGES);
  if (changes.size() < MOST_CHANGES) view.rest = Clock::now() + REST;
  List set, gone;
  for (const kecpp::Change& change : changes) {
    if (!IsShown(change)) continue;
    const std::string id = std::string(kecpp::NameOf(change.kind)) + " " + change.key;
    if (change.type == kecpp::Change::Type::removed) {
      gone.Add(id);
    } else if (auto row = Row(inventory, change)) {
      (*row)["id"] = id;
      (*row)["kind"] = kecpp::NameOf(change.kind);
      (*row)["key"] = change.key;
      set.Add(*row);
    }
  }
  if (set.IsEmpty() && gone.IsEmpty()) return {};
  return "event: rows\ndata: {\"set\":" + set.Text() + ",\"gone\":" + gone.Text() + "}\n\n";
}

}  // namespace tools::agent
