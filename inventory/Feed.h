// SPDX-License-Identifier: MIT
//
// A connection's change feed, in the interface's terms.
//
// Thread safety: any thread.
#ifndef KECPP_INVENTORY_FEED_H
#define KECPP_INVENTORY_FEED_H

#include <kecpp/inventory.h>

#include <chrono>
#include <cstddef>
#include <memory>
#include <vector>

namespace kecpp {

class Connection;

class Feed {
 public:
  // Begins with all that is cached. Throws Error. The connection may go before the feed: it is
  // stopped then.
  explicit Feed(Connection& connection);
  ~Feed();
  Feed(const Feed&) = delete;
  Feed& operator=(const Feed&) = delete;

  // Replaces `changes` by the next ones, at most `max`, and returns their number. Does not wait.
  std::size_t Take(std::vector<Change>& changes, std::size_t max);
  bool HasChanges();

  // Waits until there are changes, or it is stopped or closed, at most for `limit`.
  void Wait(std::chrono::milliseconds limit);

  // Its data sync was stopped: nothing more will come.
  bool IsStopped() const;
  void Close();

 private:
  class Impl;
  std::unique_ptr<Impl> impl;
};

}  // namespace kecpp

#endif
