// SPDX-License-Identifier: MIT
//
// Counts CIM requests and those below /api/: by operation and outcome, and how long their answers
// took.
//
// Thread safety: any thread.
#ifndef KECPP_TOOLS_AGENT_METRICS_REQUESTCOUNTERS_H
#define KECPP_TOOLS_AGENT_METRICS_REQUESTCOUNTERS_H

#include <array>
#include <chrono>
#include <cstddef>
#include <map>
#include <mutex>
#include <string>
#include <utility>

#include "tools/common/Exposition.h"

namespace tools::agent {

class RequestCounters {
 public:
  // A request whose answer began after that time. Both texts are of few that there are: a client
  // must not be able to make new ones.
  void Count(const std::string& operation, const std::string& outcome,
             std::chrono::duration<double> time);

  // Of answers to CIM requests.
  void CountBytes(std::size_t bytes);

  void Write(Exposition& out) const;

 private:
  static constexpr std::array<double, 8> BOUNDS = {0.0005, 0.001, 0.005, 0.02, 0.1, 0.5, 2, 10};

  struct Times {
    std::array<unsigned long long, BOUNDS.size()> upTo = {};  // each at most its bound, seconds
    unsigned long long count = 0;
    double sum = 0;
  };

  mutable std::mutex mutex;  // guards all below
  std::map<std::pair<std::string, std::string>, unsigned long long> requests;
  std::map<std::string, Times> times;  // by operation
  unsigned long long bytes = 0;
};

}  // namespace tools::agent

#endif
