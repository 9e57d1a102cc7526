// SPDX-License-Identifier: MIT
//
// Watches every revision of a cluster's objects and judges each: a value that carries a number must
// never follow one with a greater number, and nothing goes that was not to go.
//
// Thread safety: any thread; it has one of its own.
#ifndef KECPP_ENDURANCE_FLEETMONITOR_H
#define KECPP_ENDURANCE_FLEETMONITOR_H

#include <atomic>
#include <map>
#include <mutex>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <thread>

#include "fleet/EtcdClient.h"

namespace endurance {

class FleetMonitor {
 public:
  explicit FleetMonitor(const kecpp::fleet::EtcdOptions& options);
  ~FleetMonitor();
  FleetMonitor(const FleetMonitor&) = delete;
  FleetMonitor& operator=(const FleetMonitor&) = delete;

  // From now on this key may go. No other does, whatever becomes of sessions and connections.
  void ExpectRemoval(const std::string& key);

  // Waits until it has seen that revision; false after a minute.
  bool HasSeen(std::int64_t revision) const;

  // The last revision of a key that it has seen.
  std::int64_t Seen() const { return seen; }
  std::size_t Events() const { return events; }
  std::size_t Streams() const { return streams; }  // watches begun
  // What was wrong; empty: nothing.
  std::string Wrong() const;

  // Machines get names with such numbers.
  static std::string NameOf(unsigned long long number) { return "n-" + std::to_string(number); }

 private:
  void Run();
  bool Take(const nlohmann::json& line);
  void Judge(const nlohmann::json& event);

  kecpp::fleet::EtcdClient client;
  std::atomic<std::int64_t> seen{0};
  std::atomic<std::size_t> events{0};
  std::atomic<std::size_t> streams{0};
  std::atomic<bool> isEnding{false};
  std::map<std::string, unsigned long long> numbers;  // by key; by the thread
  mutable std::mutex mutex;
  std::string wrong;  // guarded by `mutex`, like the next one
  std::set<std::string> mayGo;
  std::thread thread;
};

}  // namespace endurance

#endif
