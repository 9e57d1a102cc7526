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

InventoryGate::Visit InventoryGate::Enter() const {
  const kecpp::Status status = inventory.State();
  if (ended || !IsConnected(status)) throw NotReady();
  Visit visit;
  visit.inventory = &inventory;
  visit.hasAuthorization = status.hasAuthorization;
  visit.connections = status.connections;
  return visit;
}

void InventoryGate::Visit::Confirm() const {
  if (inventory->State().connections != connections) throw NotReady();
}

}  // namespace tools::agent
