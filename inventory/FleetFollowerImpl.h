// SPDX-License-Identifier: MIT
//
// What a FleetFollower has not given yet: first everything that there is, by walking over it, so
// that it costs no memory; then, and for what the walk has passed, what changes.
//
// Thread safety: any thread. The store's mutex guards all fields.
#ifndef KECPP_INVENTORY_FLEETFOLLOWERIMPL_H
#define KECPP_INVENTORY_FLEETFOLLOWERIMPL_H

#include <condition_variable>
#include <memory>

#include "inventory/FleetStore.h"
#include "inventory/PendingChanges.h"

namespace kecpp {

class FleetFollower::Impl {
 public:
  explicit Impl(std::shared_ptr<FleetStore> from) : store(std::move(from)) {}

  bool Wait(std::chrono::milliseconds limit);
  std::vector<FleetChange> Next(std::size_t max);
  void Close();
  bool IsClosed() const;

  // The store calls these under its mutex.
  void NoteNoLock(const FleetChange& change);
  void WakeNoLock() { wake.notify_all(); }
  void CloseNoLock();

 private:
  bool HasNewsNoLock() const;

  const std::shared_ptr<FleetStore> store;
  std::condition_variable wake;
  bool isWalking = true;
  FleetPlace place;  // of the walk
  PendingFleetChanges pending;
  bool isClosed = false;
};

}  // namespace kecpp

#endif
