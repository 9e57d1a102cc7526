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

namespace tools::agent {

class InventoryGate {
 public:
  // Requests wait for the first data at most for `limit`. The inventory outlives the object.
  InventoryGate(const kecpp::Inventory& inventory, std::chrono::milliseconds limit);

  // Waits until the daemon is connected, or for as long as requests wait at most.
  void AwaitOpen() const;

  // The inventory as one connection has it.
  class Visit {
   public:
    const kecpp::Inventory& Inventory() const { return *inventory; }
    bool HasAuthorization() const { return hasAuthorization; }

    // Throws NotReady when another connection has taken the place of the one that the visit began
    // with: what was read in several steps may then be of both. The second one has all of it, too,
    // but not what the first one's keys led to.
    void Confirm() const;

   private:
    friend class InventoryGate;
    const kecpp::Inventory* inventory;
    bool hasAuthorization;
    unsigned long long connections;
  };

  // Throws NotReady when the daemon is not connected.
  Visit Enter() const;

  // Lets every waiting request go; no more get in.
  void End() { ended = true; }

 private:
  const kecpp::Inventory& inventory;
  const std::chrono::milliseconds limit;
  std::atomic<bool> ended{false};
};

}  // namespace tools::agent

#endif
