// SPDX-License-Identifier: MIT
#include "tools/inventory/FleetRun.h"

#include <algorithm>

#include "tools/inventory/FleetText.h"

namespace tools::inventory {
namespace {

using Clock = std::chrono::steady_clock;
using State = kecpp::FleetStatus::State;
using std::chrono::milliseconds;

constexpr int WAIT_SLICE_MS = 200;
constexpr milliseconds TURN(20);                // of a cluster among several
constexpr milliseconds SHORTEST_GAP(200);       // between two times that everything is shown
constexpr std::chrono::seconds LONGEST_GAP(5);  // of what is redrawn: sites grow older

}  // namespace

FleetRun::FleetRun(const Options& opts, const EndOfRun& endOfRun)
    : options(opts), end(endOfRun), view(opts) {
  for (const kecpp::FleetOptions& cluster : options.clusters) readings.emplace_back(cluster);
  for (Reading& reading : readings) {
    reading.AwaitFirstData(end);
    const bool isOne = readings.size() == 1;
    clusters.push_back(
        {isOne ? std::string() : ClusterName(reading.options.members), &reading.fleet});
  }
}

FleetRun::Reading::Reading(const kecpp::FleetOptions& of)
    : options(of), fleet(of), follower(fleet.Follow()) {}

void FleetRun::Reading::AwaitFirstData(const EndOfRun& end) {
  for (kecpp::FleetStatus status = fleet.State(); status.state != State::connected;
       status = fleet.State()) {
    if (!status.reason.empty()) throw kecpp::Error(options.members, status.reason);
    if (end.Ended()) throw kecpp::Error("", "ended before the fleet was read");
    fleet.WaitForState(status, milliseconds(end.Slice(WAIT_SLICE_MS)));
  }
}

void FleetRun::ShowOnce() {
  while (TakeChanges(milliseconds(0)) && !end.Ended()) {
  }
  if (options.format != Format::events) ShowAll();
  ReportState();
}

void FleetRun::ShowAll() {
  const auto begin = Clock::now();
  view.ShowText(options.format == Format::json
                    ? FleetJson(clusters, options.lists)
                    : FleetTables(clusters, options.lists, view.Room(options.lists.size() + 1)));
  shown = Clock::now();
  took = shown - begin;
}

void FleetRun::Follow() {
  bool isNews = false;
  while (!end.Ended()) {
    isNews = TakeChanges(milliseconds(end.Slice(WAIT_SLICE_MS))) || isNews;
    ReportState();
    if (options.format == Format::events) continue;
    const auto since = Clock::now() - shown;
    const bool isOld = view.Redraws() && since > LONGEST_GAP;
    if (!isOld && (!isNews || since < std::max<Clock::duration>(SHORTEST_GAP, took))) continue;
    ShowAll();
    isNews = false;
  }
}

// False when there were none within `limit`. The clusters are waited for one after the other: what
// one has may wait for the others' turns.
bool FleetRun::TakeChanges(milliseconds limit) {
  bool isNews = false;
  auto cluster = clusters.begin();
  for (Reading& reading : readings) {
    const bool isAlone = readings.size() == 1;
    if (reading.follower.Wait(isNews ? milliseconds(0) : isAlone ? limit : std::min(limit, TURN))) {
      isNews = true;
      const auto changes = reading.follower.Next();
      if (options.format == Format::events) {
        View::ShowLines(FleetEventLines(changes, *cluster, options.lists));
      }
    }
    ++cluster;
  }
  return isNews;
}

void FleetRun::ReportState() {
  for (Reading& reading : readings) reading.ReportState();
}

void FleetRun::Reading::ReportState() {
  const kecpp::FleetStatus status = fleet.State();
  if (status.skipped != 0 && reportedSkipped == 0) {
    Report("what is in the cluster under " + status.lastSkipped + "; it is passed over");
  }
  reportedSkipped = status.skipped;
  loss.Look(status.state == State::lost, status.reason);
}

}  // namespace tools::inventory
