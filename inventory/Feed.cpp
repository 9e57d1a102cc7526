// SPDX-License-Identifier: MIT
#include "inventory/Feed.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <utility>

#include "inventory/Connection.h"
#include "inventory/Values.h"

namespace kecpp {
namespace {

constexpr std::size_t kMost = 4096;  // entries taken at once

Change::Type TypeOf(KE::Instance::KEChange::Kind kind) {
  using Inner = KE::Instance::KEChange::Kind;
  if (kind == Inner::added) return Change::Type::added;
  return kind == Inner::removed ? Change::Type::removed : Change::Type::changed;
}

}  // namespace

class Feed::Impl {
 public:
  explicit Impl(KE::Instance::KEChangeFeed* opened) : feed(opened) {}

  // 1, 0 when the time is over, -1 when it is stopped.
  int Wait(int milliseconds) {
    const int result = feed->Wait(milliseconds);
    stopped = result < 0;
    return result;
  }

  const std::unique_ptr<KE::Instance::KEChangeFeed> feed;
  std::atomic<bool> stopped{false};
  std::mutex mutex;
  std::vector<KE::Instance::KEChange> room;  // guarded by `mutex`
};

Feed::Feed(Connection& connection) try
    : impl(std::make_unique<Impl>(connection.Sync().OpenChangeFeed())) {
} catch (const KELib::Throwable& error) {
  throw Error(connection.Url(), std::string("cannot follow: ") + error.What());
}

Feed::~Feed() = default;

std::size_t Feed::Take(std::vector<Change>& changes, std::size_t max) {
  changes.clear();
  const std::lock_guard<std::mutex> lock(impl->mutex);
  impl->room.resize(std::min(max, kMost));
  // One call gives an object once; another is made only when no entry was of a kind known here.
  for (int taken = 1; taken > 0 && changes.empty();) {
    taken = impl->feed->Take(impl->room.data(), static_cast<int>(impl->room.size()), 0);
    for (int i = 0; i < taken; ++i) {
      const KE::Instance::KEChange& change = impl->room[static_cast<std::size_t>(i)];
      Kind kind;
      if (!FindKind(change.className, kind)) continue;
      changes.push_back({TypeOf(change.kind), kind, Decode(change.key.Cstr())});
    }
  }
  return changes.size();
}

bool Feed::HasChanges() {
  return impl->Wait(0) > 0;
}

void Feed::Wait(std::chrono::milliseconds limit) {
  constexpr std::chrono::milliseconds kLongest = std::chrono::hours(1);
  impl->Wait(static_cast<int>(std::min(limit, kLongest).count()));
}

bool Feed::IsStopped() const {
  return impl->stopped;
}

void Feed::Close() {
  impl->feed->Close();
}

}  // namespace kecpp
