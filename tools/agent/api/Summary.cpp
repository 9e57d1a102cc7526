// SPDX-License-Identifier: MIT
#include "tools/agent/api/Summary.h"

#include <algorithm>

#include "tools/agent/api/Items.h"

namespace tools::agent::api {
namespace {

const char* NameOf(kecpp::Status::State state) {
  using State = kecpp::Status::State;
  if (state == State::connected) return "connected";
  return state == State::lost ? "lost" : "connecting";
}

// The later one of what this connection met and what ended one before.
Failure LastFailure(const kecpp::Status& status, const ConnectionReport& report) {
  Failure last = report.LastFailure();
  if (!status.lastFailure.empty() && status.lastFailureTime > last.time) {
    last = {status.lastFailure, status.lastFailureTime};
  }
  return last;
}

// `change` is the time of the last one: the status is behind it by a moment.
Json ConnectionOf(const kecpp::Status& status, const ConnectionReport& report,
                  std::chrono::system_clock::time_point change) {
  const Failure failure = LastFailure(status, report);
  return {{"state", NameOf(status.state)},
          {"reason", status.reason},
          {"since", TimeText(status.since)},
          {"connections", status.connections},
          {"updates", status.updates},
          {"lastUpdate", TimeText(std::max(status.lastUpdate, change))},
          {"failures", status.failures},
          {"lastFailure", failure.text},
          {"lastFailureTime", TimeText(failure.time)},
          {"daemon", status.version}};
}

}  // namespace

Summary::Summary(const kecpp::Inventory& shown, const ConnectionReport& connectionReport,
                 Catalogues& rows, const Journal& record)
    : inventory(shown), report(connectionReport), catalogues(rows), journal(record) {}

std::string Summary::Text() const {
  const kecpp::Status status = inventory.State();
  const Sums sums = catalogues.Total();
  const auto count = [&](kecpp::Kind kind) { return Json{{"total", inventory.Count(kind)}}; };
  return Dump(
      {{"agent", {{"version", KECPP_TOOLS_VERSION}}},
       {"connection", ConnectionOf(status, report, journal.LastTime())},
       {"authorization",
        {{"shown", status.hasAuthorization}, {"reason", status.authorizationFailure}}},
       {"hosts", {{"total", sums.hosts}, {"status", NumbersOf(HEALTH_NAMES, sums.hostsByHealth)}}},
       {"machines",
        {{"total", sums.machines},
         {"power", NumbersOf(POWER_NAMES, sums.machinesByPower)},
         {"status", NumbersOf(HEALTH_NAMES, sums.machinesByHealth)}}},
       {"roles", count(kecpp::Kind::role)},
       {"privileges", count(kecpp::Kind::privilege)},
       {"identities", count(kecpp::Kind::identity)},
       {"activity", {{"seconds", Journal::SLOT.count()}, {"counts", journal.Activity()}}}});
}

std::string Summary::SharedText() {
  const std::lock_guard<std::mutex> lock(mutex);
  const Journal::Version now = journal.Now();
  if (text.empty() || version != now) {
    text = Text();
    version = now;
  }
  return text;
}

}  // namespace tools::agent::api
