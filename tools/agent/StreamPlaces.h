// SPDX-License-Identifier: MIT
//
// The places for event streams: at most half of the connections, so that pages that were left open
// keep no CIM client out.
//
// Thread safety: any thread.
#ifndef KECPP_TOOLS_AGENT_STREAMPLACES_H
#define KECPP_TOOLS_AGENT_STREAMPLACES_H

#include <algorithm>
#include <atomic>
#include <memory>

#include "tools/agent/Limits.h"

namespace tools::agent {

class StreamPlaces {
 public:
  explicit StreamPlaces(const Limits& limits)
      : free(std::make_shared<std::atomic<unsigned>>(std::max(1u, limits.connections / 2))) {}

  // One of the places, for as long as it is held; null when there is none.
  std::shared_ptr<void> Take() const {
    unsigned left = *free;
    while (left > 0 && !free->compare_exchange_weak(left, left - 1)) {
    }
    if (left == 0) return nullptr;
    return std::shared_ptr<void>(free.get(), [places = free](void*) { ++*places; });
  }

 private:
  const std::shared_ptr<std::atomic<unsigned>> free;
};

}  // namespace tools::agent

#endif
