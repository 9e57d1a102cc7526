// SPDX-License-Identifier: MIT
//
// A reader of the fleet behind lines that can be cut: what it was given event by event, which at
// rest is what the daemons have.
//
// Thread safety: any thread; it has one of its own.
#ifndef KECPP_ENDURANCE_FLEETCOPY_H
#define KECPP_ENDURANCE_FLEETCOPY_H

#include <kecpp/fleet.h>

#include <atomic>
#include <map>
#include <mutex>
#include <string>
#include <thread>

#include "endurance/Replay.h"
#include "simulator/driver/Lines.h"

namespace endurance {

// The objects of a site as the daemon writes them, by "CLASS/KEY" of their keys in the cluster.
using SiteContent = std::map<std::string, Json>;

class FleetCopy {
 public:
  // Reads all sites of a cluster. Throws kecpp::Error.
  explicit FleetCopy(const std::string& members);
  ~FleetCopy();
  FleetCopy(const FleetCopy&) = delete;
  FleetCopy& operator=(const FleetCopy&) = delete;

  SiteContent Of(const std::string& site) const;
  driver::Lines& Cluster() { return lines; }

  std::size_t Events() const { return events; }
  unsigned long long Readings() const { return fleet.State().readings; }
  // Events that could not be, like a removal of what was not there; empty: none.
  std::string Wrong() const;

 private:
  void Run();
  void Take(const kecpp::FleetChange& change);
  Json Find(const kecpp::FleetChange& change) const;

  driver::Lines lines;
  kecpp::Fleet fleet;
  kecpp::FleetFollower follower;
  std::atomic<std::size_t> events{0};
  mutable std::mutex mutex;
  std::map<std::string, SiteContent> sites;  // guarded by `mutex`, like the next one
  std::string wrong;
  std::thread thread;
};

}  // namespace endurance

#endif
