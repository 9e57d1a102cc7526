// SPDX-License-Identifier: MIT
#include "tools/inventory/InventoryRun.h"

#include "tools/common/ObjectJson.h"
#include "tools/common/ProcessEnd.h"
#include "tools/inventory/FillProgress.h"

namespace tools::inventory {
namespace {

using Clock = std::chrono::steady_clock;
using State = kecpp::Status::State;
using std::chrono::milliseconds;

constexpr int WAIT_SLICE_MS = 200;
constexpr std::chrono::seconds SETTLE_LIMIT(60);

}  // namespace

void AwaitFirstData(const kecpp::Inventory& inventory, const EndOfRun& end) {
  FillProgress progress;
  for (kecpp::Status status = inventory.State(); status.state != State::connected;
       status = inventory.State()) {
    if (!status.reason.empty()) throw kecpp::Error("", status.reason);
    if (end.Ended()) throw kecpp::Error("", "ended before the inventory was read");
    inventory.WaitForState(status, milliseconds(end.Slice(WAIT_SLICE_MS)));
    progress.Show(inventory);
  }
}

InventoryRun::InventoryRun(const Options& opts, const EndOfRun& endOfRun)
    : options(opts),
      end(endOfRun),
      view(opts),
      inventory(InventoryOptions(opts)),
      follower(inventory.Follow()) {
  AwaitFirstData(inventory, end);
  const kecpp::Status status = inventory.State();
  if (!status.authorizationFailure.empty()) {
    Report("cannot watch roles and privileges: " + status.authorizationFailure);
  }
}

void InventoryRun::ShowOnce() {
  ReadUntilSettled();
  if (options.format != Format::events) view.Show(model);
  NoteInventoryRead();
}

// What comes later is shown as it comes where changes are followed.
void InventoryRun::ReadUntilSettled() {
  const auto limit = Clock::now() + SETTLE_LIMIT;
  while (TakeChanges(milliseconds(options.follow ? 0 : options.settle))) {
    if (end.Ended() || Clock::now() > limit) {
      Report("the inventory still changes; it is shown as it is now");
      return;
    }
  }
}

void InventoryRun::Follow() {
  while (!end.Ended()) {
    const bool isNews = TakeChanges(milliseconds(end.Slice(WAIT_SLICE_MS)));
    if (isNews && options.format != Format::events) view.Show(model);
    ReportState();
  }
}

// False when there were none within `limit`.
bool InventoryRun::TakeChanges(milliseconds limit) {
  if (!follower.Wait(limit)) return false;
  changes = follower.Next();
  if (options.format == Format::events) {
    View::ShowLines(EventLines(changes, inventory,
                               [this](kecpp::Kind kind) { return HasKind(options.lists, kind); }));
  } else {
    model.Apply(changes, inventory);
  }
  return true;
}

void InventoryRun::ReportState() {
  const kecpp::Status status = inventory.State();
  loss.Look(status.state == State::lost, status.reason);
}

}  // namespace tools::inventory
