// SPDX-License-Identifier: MIT
#include <algorithm>
#include <utility>

#include "inventory/FleetFollowerImpl.h"
#include "inventory/FollowerImpl.h"

namespace kecpp {

FleetFollower::FleetFollower(std::shared_ptr<Impl> made) : impl(std::move(made)) {}
FleetFollower::FleetFollower(FleetFollower&&) noexcept = default;
FleetFollower& FleetFollower::operator=(FleetFollower&& other) noexcept {
  if (this != &other) {
    if (impl) impl->Close();
    impl = std::move(other.impl);
  }
  return *this;
}
FleetFollower::~FleetFollower() {
  if (impl) impl->Close();
}

bool FleetFollower::Wait(std::chrono::milliseconds limit) {
  return impl->Wait(limit);
}

std::vector<FleetChange> FleetFollower::Next(std::size_t max) {
  return impl->Next(max);
}

void FleetFollower::Close() {
  impl->Close();
}

bool FleetFollower::Closed() const {
  return impl->IsClosed();
}

bool FleetFollower::Impl::Wait(std::chrono::milliseconds limit) {
  std::unique_lock<std::mutex> lock(store->mutex);
  wake.wait_for(lock, std::min(limit, kLongestWait), [&] { return isClosed || HasNewsNoLock(); });
  return !isClosed && HasNewsNoLock();
}

// Before everything was read once there is no first content to walk over.
bool FleetFollower::Impl::HasNewsNoLock() const {
  if (!pending.Empty()) return true;
  if (!isWalking || !store->isFilled) return false;
  FleetPlace next = place;
  return !store->WalkNoLock(next, 1).empty();
}

std::vector<FleetChange> FleetFollower::Impl::Next(std::size_t max) {
  const std::lock_guard<std::mutex> lock(store->mutex);
  std::vector<FleetChange> changes;
  if (isClosed || !store->isFilled) return changes;
  if (isWalking) {
    constexpr std::size_t kMost = 1024;  // under the mutex
    changes = store->WalkNoLock(place, std::min(max, kMost));
    isWalking = !changes.empty() || max == 0;
  }
  return changes.empty() ? pending.Take(max) : changes;
}

void FleetFollower::Impl::NoteNoLock(const FleetChange& change) {
  if (isClosed || (isWalking && !place.IsBehind(change))) return;  // the walk will meet it, or not
  pending.Add(change);
}

void FleetFollower::Impl::Close() {
  const std::lock_guard<std::mutex> lock(store->mutex);
  CloseNoLock();
}

void FleetFollower::Impl::CloseNoLock() {
  isClosed = true;
  pending = {};
  wake.notify_all();
}

bool FleetFollower::Impl::IsClosed() const {
  const std::lock_guard<std::mutex> lock(store->mutex);
  return isClosed;
}

}  // namespace kecpp
