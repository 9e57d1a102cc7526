// SPDX-License-Identifier: MIT
//
// Lets requests read the inventory while the daemon is connected: an answer holds all that there
// is, or there is no answer.
//
// Thread safety: any thread.
#ifndef KECPP_TOOLS_AGENT_INVENTORYGATE_H
#define KECPP_TOOLS_AGENT_INVENTORYGATE_H

#include <kecpp/inventory.h>

#include <atomic>
#include <chrono>
#include <functional>

namespace tools::agent {

class InventoryGate {
 public:
  // Requests wait for the first data at most for `limit`. The inventory outlives the object.
  InventoryGate(const kecpp::Inventory& inventory, std::chrono::milliseconds limit);

  // Waits until the daemon is connected, or for as long as requests wait at most.
  void AwaitOpen() const;

  // Calls `read`, which copies what it needs. Throws NotReady when the daemon is not connected, and
  // when another connection took the place of the one that was read.
  using Read = std::function<void(const kecpp::Inventory& inventory, const kecpp::Status& status)>;
  void Enter(const Read& read) const;

  // Lets every waiting request go; no more get in.
  void End() { ended = true; }

 private:
  const kecpp::Inventory& inventory;
  const std::chrono::milliseconds limit;
  std::atomic<bool> ended{false};
};

}  // namespace tools::agent

#endif
