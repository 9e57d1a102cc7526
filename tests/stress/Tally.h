// SPDX-License-Identifier: MIT
//
// What the actors did and found. Thread safety: any thread.
#ifndef KECPP_TESTS_STRESS_TALLY_H
#define KECPP_TESTS_STRESS_TALLY_H

#include <map>
#include <mutex>
#include <string>

namespace stress {

class Tally {
 public:
  void Count(const std::string& what, unsigned long times = 1) {
    const std::lock_guard<std::mutex> lock(mutex);
    counts[what] += times;
  }

  // Something that must not be.
  void Wrong(const std::string& what) {
    const std::lock_guard<std::mutex> lock(mutex);
    ++wrongs[what];
  }

  std::map<std::string, unsigned long> Counts() const {
    const std::lock_guard<std::mutex> lock(mutex);
    return counts;
  }
  std::map<std::string, unsigned long> Wrongs() const {
    const std::lock_guard<std::mutex> lock(mutex);
    return wrongs;
  }

 private:
  mutable std::mutex mutex;
  std::map<std::string, unsigned long> counts, wrongs;
};

}  // namespace stress

#endif
