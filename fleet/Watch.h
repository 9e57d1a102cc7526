// SPDX-License-Identifier: MIT
//
// Follows what changes below some keys of the cluster, from a revision on: several ranges on one
// stream. It knows how far it has come in each, so that it goes on at another member without a gap.
//
// Thread safety: none.
#ifndef KECPP_FLEET_WATCH_H
#define KECPP_FLEET_WATCH_H

#include <chrono>
#include <cstdint>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "fleet/EtcdClient.h"

namespace kecpp::fleet {

// Where a cluster is: its own number, and the revision of its last change.
struct Position {
  std::string cluster;
  std::int64_t revision = 0;
};

// Asks the members, one after the other, until one answers what the majority confirms. `key` is one
// that the user may read, whether it is there or not. Throws EtcdError.
Position ReadPosition(EtcdClient& client, std::string_view key);

struct WatchRange {
  std::string begin;
  std::string end;  // behind the last one; empty: `begin` is one key
};

struct WatchEvent {
  bool isRemoved = false;
  KeyValue entry;
};

class Watch {
 public:
  // From behind that position.
  Watch(std::vector<WatchRange> ranges, Position position);

  // Calls `use` with what changes, a revision's events of a range in one call or in several that
  // follow each other. Returns when nothing came for `silence`: nothing has changed, or the
  // member has stopped. So the caller asks where the cluster is and runs it again. Throws EtcdError
  // when the stream ends otherwise; IsCompacted says that the events behind the last one are gone.
  // What `use` throws ends it too.
  using UseEvents = std::function<void(std::vector<WatchEvent>&& events)>;
  void Run(EtcdClient& client, std::chrono::milliseconds silence, const UseEvents& use);

  // Takes one line of the stream, as Run does. Throws EtcdError.
  void TakeLine(const nlohmann::json& line, const UseEvents& use);

  // Whether all that was seen is still there: the same cluster, not set back.
  bool IsAt(const Position& now) const;

 private:
  struct Part {
    WatchRange range;
    std::int64_t next;  // the revision to go on from
  };

  std::string Request() const;
  Part& PartOf(const nlohmann::json& line);

  const std::string cluster;
  std::vector<Part> parts;
};

}  // namespace kecpp::fleet

#endif
