// SPDX-License-Identifier: MIT
//
// A follower's side of the connections: the feed of the one that there is, and what differed when
// one took the place of another.
//
// Thread safety: any thread. Locks: `mutex`, before those of a feed.
#ifndef KECPP_INVENTORY_FOLLOWERIMPL_H
#define KECPP_INVENTORY_FOLLOWERIMPL_H

#include <kecpp/inventory.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "inventory/Feed.h"
#include "inventory/PendingChanges.h"

namespace kecpp {

// Longer waits are cut to it, so that no sum of times overflows.
inline constexpr std::chrono::milliseconds kLongestWait = std::chrono::hours(24 * 365);

class Follower::Impl {
 public:
  bool Wait(std::chrono::milliseconds limit);
  std::vector<Change> Next(std::size_t max);
  void Close();
  bool IsClosed() const;

  // The first connection's feed, nothing of which was taken.
  void Begin(std::shared_ptr<Feed> first);

  // From now on `next` is its feed, whose first content was taken. `differences` is what that
  // content has different from the last known one, and IsKnown says what was in the latter.
  using IsKnown = std::function<bool(Kind, const std::string&)>;
  void Switch(std::shared_ptr<Feed> next, const std::vector<Change>& differences,
              const IsKnown& isKnown);

 private:
  void DrainNoLock();
  void AddNewNoLock(Change change, const IsKnown& isKnown);

  mutable std::mutex mutex;
  std::condition_variable wake;
  std::shared_ptr<Feed> feed;  // guarded by `mutex`, like all below; null before the first
  PendingChanges pending;
  bool closed = false;
};

}  // namespace kecpp

#endif
