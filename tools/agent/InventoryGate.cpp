// SPDX-License-Identifier: MIT
#include "tools/agent/InventoryGate.h"

#include <algorithm>

#include "tools/agent/Errors.h"

namespace tools::agent {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds SLICE(100);  // End wakes nobody

bool IsConnected(const kecpp::Status& status) {
  return status.state == kecpp::Status::State::connected;
}

}  // namespace

InventoryGate::InventoryGate(const kecpp::Inventory& gated, milliseconds requestsWait)
    : inventory(gated), limit(requestsWait) {}

void InventoryGate::AwaitOpen() const {
  const auto deadline = Clock::now() + limit;
  for (kecpp::Status seen = inventory.State(); !ended && !IsConnected(seen);
       seen = inventory.State()) {
    const auto left = std::chrono::ceil<milliseconds>(deadline - Clock::now());
    if (left.count() <= 0) return;
    inventory.WaitForState(seen, std::min(left, SLICE));
  }
}

// What is read in several steps may come from two connections: the second one has all of it, too,
// but not what the first one's keys led to.
void InventoryGate::Enter(const Read& read) const {
  const kecpp::Status before = inventory.State();
  if (ended || !IsConnected(before)) throw NotReady();
  read(inventory, before);
  if (inventory.State().connections != before.connections) throw NotReady();
}

}  // namespace tools::agent
