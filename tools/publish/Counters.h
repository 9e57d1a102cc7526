// SPDX-License-Identifier: MIT
//
// What a publisher has done and how it is, for its metrics and its line on a terminal.
//
// Thread safety: any thread.
#ifndef KECPP_TOOLS_PUBLISH_COUNTERS_H
#define KECPP_TOOLS_PUBLISH_COUNTERS_H

#include <atomic>
#include <cstdint>

namespace tools::publish {

struct Counters {
  using Count = std::atomic<std::uint64_t>;

  Count put{0};           // documents written
  Count removed{0};       // documents removed
  Count unchanged{0};     // objects looked at of which the cluster had the same
  Count transactions{0};  // that were carried out
  Count contested{0};     // transactions that found something else than they thought
  Count failed{0};        // requests without an answer, or refused
  Count renewed{0};       // times that the epoch was taken again
  Count agreements{0};    // times that everything was compared and the same in the end
  Count objects{0};       // in the cluster, of this site
  std::atomic<std::int64_t> agreed{0};  // when last, milliseconds since 1970; 0: not yet
  std::atomic<bool> isFenced{false};
  std::atomic<bool> isInTrouble{false};
};

}  // namespace tools::publish

#endif
