// SPDX-License-Identifier: MIT
//
// Counts what the daemon was asked and what it refused.
//
// Thread safety: any thread.
#ifndef KECPP_SIMULATOR_STATISTICS_H
#define KECPP_SIMULATOR_STATISTICS_H

#include <map>
#include <mutex>
#include <string>

namespace sim {

class Statistics {
 public:
  struct Counts {
    std::map<std::string, unsigned int> calls;  // by method
    unsigned int faults = 0;                    // answers that were SOAP faults
    std::string lastFault;                      // "METHOD: TEXT"
  };

  void CountCall(const std::string& method) {
    const std::lock_guard<std::mutex> lock(mutex);
    ++counts.calls[method];
  }
  void CountFault(const std::string& text) {
    const std::lock_guard<std::mutex> lock(mutex);
    ++counts.faults;
    counts.lastFault = text;
  }
  Counts Get() {
    const std::lock_guard<std::mutex> lock(mutex);
    return counts;
  }

 private:
  std::mutex mutex;
  Counts counts;
};

}  // namespace sim

#endif
