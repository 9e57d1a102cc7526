// SPDX-License-Identifier: MIT
//
// The objects of any kind of one cluster or several.
//
// Thread safety: any thread.
#ifndef KECPP_TOOLS_INVENTORY_FLEETOBJECTS_H
#define KECPP_TOOLS_INVENTORY_FLEETOBJECTS_H

#include <kecpp/fleet.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tools/common/ObjectView.h"

namespace tools::inventory {

// Where sites are.
struct Cluster {
  std::string name;  // empty when there is but one
  const kecpp::Fleet* fleet;
};
using Clusters = std::vector<Cluster>;

// A site of a cluster. Two clusters may have sites of the same name; they are two.
struct PlacedSite {
  const Cluster* cluster;
  kecpp::Site site;
};
// By name, then in the order of the clusters.
std::vector<PlacedSite> AllSites(const Clusters& clusters);

// By site, as above, and key.
void ForEachObject(const Clusters& clusters, kecpp::Kind kind,
                   const std::function<void(const PlacedSite& at, const Object&)>& use);

std::optional<Object> FindFleetObject(const kecpp::Fleet& fleet, const std::string& site,
                                      kecpp::Kind kind, const std::string& key);

// "complete", "syncing", "daemon lost" or "silent".
const char* StateWord(const kecpp::Site& site);

// How old what is known of the site is: "now", "12 s", "3 min", "5 h", "2 d"; "-" when nobody
// knows.
std::string AgeWord(const kecpp::Site& site, std::chrono::system_clock::time_point now);

}  // namespace tools::inventory

#endif
