// SPDX-License-Identifier: MIT
//
// What became of indications, and how many subscriptions there are, for the metrics.
//
// Thread safety: any thread.
#ifndef KECPP_TOOLS_AGENT_INDICATIONS_DELIVERYCOUNTERS_H
#define KECPP_TOOLS_AGENT_INDICATIONS_DELIVERYCOUNTERS_H

#include <atomic>
#include <cstddef>

namespace tools::agent {

struct DeliveryCounters {
  std::atomic<unsigned long long> delivered{0};
  std::atomic<unsigned long long> retried{0};
  std::atomic<unsigned long long> dropped{0};
  std::atomic<std::size_t> subscriptions{0};
};

}  // namespace tools::agent

#endif
