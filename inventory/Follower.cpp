// SPDX-License-Identifier: MIT
#include <algorithm>
#include <utility>

#include "inventory/FollowerImpl.h"

namespace kecpp {

using Clock = std::chrono::steady_clock;

Follower::Follower(std::shared_ptr<Impl> made) : impl(std::move(made)) {}
Follower::Follower(Follower&&) noexcept = default;
Follower& Follower::operator=(Follower&& other) noexcept {
  if (this != &other) {
    if (impl) impl->Close();
    impl = std::move(other.impl);
  }
  return *this;
}
Follower::~Follower() {
  if (impl) impl->Close();
}

bool Follower::Wait(std::chrono::milliseconds limit) {
  return impl->Wait(limit);
}

std::vector<Change> Follower::Next(std::size_t max) {
  return impl->Next(max);
}

void Follower::Close() {
  impl->Close();
}

bool Follower::Closed() const {
  return impl->IsClosed();
}

// A feed is waited for without the mutex, so that the next one may take its place: it is closed
// then, which ends the wait.
bool Follower::Impl::Wait(std::chrono::milliseconds limit) {
  const auto deadline = Clock::now() + std::min(limit, kLongestWait);
  std::unique_lock<std::mutex> lock(mutex);
  while (!closed) {
    if (!pending.Empty() || (feed && feed->HasChanges())) return true;
    const auto now = Clock::now();
    if (now >= deadline) return false;
    if (!feed) {
      wake.wait_until(lock, deadline);
      continue;
    }
    const std::shared_ptr<Feed> waited = feed;
    lock.unlock();
    waited->Wait(std::chrono::ceil<std::chrono::milliseconds>(deadline - now));
    lock.lock();
    // A stopped feed does not wait: its connection is about to be replaced.
    if (!closed && feed == waited && waited->IsStopped()) wake.wait_until(lock, deadline);
  }
  return false;
}

std::vector<Change> Follower::Impl::Next(std::size_t max) {
  const std::lock_guard<std::mutex> lock(mutex);
  std::vector<Change> changes;
  if (closed) return changes;
  if (pending.Empty()) {
    if (feed) feed->Take(changes, max);
    return changes;
  }
  DrainNoLock();
  return pending.Take(max);
}

void Follower::Impl::Close() {
  const std::lock_guard<std::mutex> lock(mutex);
  closed = true;
  pending = {};
  if (feed) feed->Close();
  wake.notify_all();
}

bool Follower::Impl::IsClosed() const {
  const std::lock_guard<std::mutex> lock(mutex);
  return closed;
}

void Follower::Impl::Begin(std::shared_ptr<Feed> first) {
  const std::lock_guard<std::mutex> lock(mutex);
  if (closed) return first->Close();
  feed = std::move(first);
  wake.notify_all();
}

void Follower::Impl::Switch(std::shared_ptr<Feed> next, const std::vector<Change>& differences,
                            const IsKnown& isKnown) {
  const std::lock_guard<std::mutex> lock(mutex);
  if (closed) return next->Close();
  DrainNoLock();
  for (const Change& change : differences) pending.Add(change);
  std::vector<Change> changes;
  while (next->Take(changes, 1000) != 0) {
    for (Change& change : changes) AddNewNoLock(std::move(change), isKnown);
  }
  if (feed) feed->Close();
  feed = std::move(next);
  wake.notify_all();
}

// What changed between the first content and now is in `differences` or not, as it came; the two
// must not contradict each other.
void Follower::Impl::AddNewNoLock(Change change, const IsKnown& isKnown) {
  if (pending.Find(change) != nullptr) return pending.Add(change);
  const bool known = isKnown(change.kind, change.key);
  if (!known && change.type == Change::Type::removed) return;
  if (change.type != Change::Type::removed) {
    change.type = known ? Change::Type::changed : Change::Type::added;
  }
  pending.Add(change);
}

// All that the present feed has, behind what is pending.
void Follower::Impl::DrainNoLock() {
  std::vector<Change> changes;
  while (feed && feed->Take(changes, 1000) != 0) {
    for (const Change& change : changes) pending.Add(change);
  }
}

}  // namespace kecpp
