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
constexpr milliseconds SHORTEST_GAP(200);       // between two times that everything is shown
constexpr std::chrono::seconds LONGEST_GAP(5);  // of what is redrawn: sites grow older

}  // namespace

FleetRun::FleetRun(const Options& opts, const EndOfRun& endOfRun)
    : options(opts), end(endOfRun), view(opts), fleet(*opts.fleet), follower(fleet.Follow()) {
  AwaitFirstData();
}

void FleetRun::AwaitFirstData() {
  for (kecpp::FleetStatus status = fleet.State(); status.state != State::connected;
       status = fleet.State()) {
    if (!status.reason.empty()) throw kecpp::Error(options.fleet->members, status.reason);
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
                    ? FleetJson(fleet, options.lists)
                    : FleetTables(fleet, options.lists, view.Room(options.lists.size() + 1)));
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

// False when there were none within `limit`.
bool FleetRun::TakeChanges(milliseconds limit) {
  if (!follower.Wait(limit)) return false;
  const auto changes = follower.Next();
  if (options.format == Format::events) {
    View::ShowLines(FleetEventLines(changes, fleet, options.lists));
  }
  return true;
}

void FleetRun::ReportState() {
  const kecpp::FleetStatus status = fleet.State();
  if (status.skipped != 0 && reportedSkipped == 0) {
    Report("what is in the cluster under " + status.lastSkipped + "; it is passed over");
  }
  reportedSkipped = status.skipped;
  loss.Look(status.state == State::lost, status.reason);
}

}  // namespace tools::inventory
