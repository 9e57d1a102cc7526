// SPDX-License-Identifier: MIT
//
// What a client may take of this agent.
#ifndef KECPP_TOOLS_AGENT_LIMITS_H
#define KECPP_TOOLS_AGENT_LIMITS_H

#include <chrono>
#include <cstddef>

namespace tools::agent {

struct Limits {
  std::size_t bodyBytes = std::size_t{1} << 20;     // of a request
  unsigned connections = 64;                        // at once, each of them has a thread
  std::size_t unsentBytes = std::size_t{64} << 20;  // of answers, before no more are begun
  // For receiving a request; for sending an answer to a client that takes less than 64 KiB a
  // second; and how long a connection may rest between two requests.
  std::chrono::seconds time{30};
};

}  // namespace tools::agent

#endif
