// SPDX-License-Identifier: MIT
//
// Counts what the daemon was asked and what it refused. Thread safety: any thread.
#pragma once

#include <map>
#include <mutex>
#include <string>

namespace sim {

class Statistics {
 public:
  void CountCall(const std::string& method) {
    const std::lock_guard<std::mutex> lock(mutex);
    ++calls[method];
  }
  void CountFault(const std::string& text) {
    const std::lock_guard<std::mutex> lock(mutex);
    ++faults;
    lastFault = text;
  }
  std::map<std::string, unsigned int> Calls() {
    const std::lock_guard<std::mutex> lock(mutex);
    return calls;
  }
  unsigned int Faults(std::string& last) {
    const std::lock_guard<std::mutex> lock(mutex);
    last = lastFault;
    return faults;
  }

 private:
  std::mutex mutex;
  std::map<std::string, unsigned int> calls;
  unsigned int faults = 0;
  std::string lastFault;
};

}  // namespace sim
