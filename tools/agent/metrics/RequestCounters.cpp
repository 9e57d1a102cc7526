// SPDX-License-Identifier: MIT
#include "tools/agent/metrics/RequestCounters.h"

namespace tools::agent {

void RequestCounters::Count(const std::string& operation, const std::string& outcome,
                            std::chrono::duration<double> time) {
  std::lock_guard<std::mutex> lock(mutex);
  ++requests[{operation, outcome}];
  Times& taken = times[operation];
  for (std::size_t i = 0; i < BOUNDS.size(); ++i) {
    if (time.count() <= BOUNDS[i]) ++taken.upTo[i];
  }
  ++taken.count;
  taken.sum += time.count();
}

void RequestCounters::CountBytes(std::size_t sent) {
  std::lock_guard<std::mutex> lock(mutex);
  bytes += sent;
}

void RequestCounters::Write(Exposition& out) const {
  std::lock_guard<std::mutex> lock(mutex);
  out.Family("kecpp_requests_total", "counter", "Requests by operation and outcome.");
  for (const auto& [key, count] : requests) {
    out.Sample({{"operation", key.first}, {"outcome", key.second}}, static_cast<double>(count));
  }
  out.Family("kecpp_request_duration_seconds", "histogram",
             "Time from a request's last byte to its answer's first.");
  for (const auto& [operation, taken] : times) {
    for (std::size_t i = 0; i < BOUNDS.size(); ++i) {
      out.Sample({{"operation", operation}, {"le", NumberText(BOUNDS[i])}},
                 static_cast<double>(taken.upTo[i]), "_bucket");
    }
    out.Sample({{"operation", operation}, {"le", "+Inf"}}, static_cast<double>(taken.count),
               "_bucket");
    out.Sample({{"operation", operation}}, taken.sum, "_sum");
    out.Sample({{"operation", operation}}, static_cast<double>(taken.count), "_count");
  }
  out.Family("kecpp_answer_bytes_total", "counter", "Bytes of answers to CIM requests.");
  out.Sample(static_cast<double>(bytes));
}

}  // namespace tools::agent
