// SPDX-License-Identifier: MIT
#include "tools/inventory/FleetObjects.h"

#include <algorithm>
#include <utility>

namespace tools::inventory {
namespace {

// Calls `call` with an object of the kind's type.
template <class Call>
auto WithType(kecpp::Kind kind, Call call) {
  switch (kind) {
    case kecpp::Kind::host:
      return call(kecpp::Host());
    case kecpp::Kind::machine:
      return call(kecpp::Machine());
    case kecpp::Kind::role:
      return call(kecpp::Role());
    case kecpp::Kind::privilege:
      return call(kecpp::Privilege());
    default:
      return call(kecpp::Identity());
  }
}

}  // namespace

std::vector<PlacedSite> AllSites(const Clusters& clusters) {
  std::vector<PlacedSite> all;
  for (const Cluster& cluster : clusters) {
    for (kecpp::Site& site : cluster.fleet->Sites()) all.push_back({&cluster, std::move(site)});
  }
  std::stable_sort(all.begin(), all.end(), [](const PlacedSite& one, const PlacedSite& other) {
    return one.site.name < other.site.name;
  });
  return all;
}

void ForEachObject(const Clusters& clusters, kecpp::Kind kind,
                   const std::function<void(const PlacedSite&, const Object&)>& use) {
  WithType(kind, [&](const auto& like) {
    using Type = std::decay_t<decltype(like)>;
    for (const PlacedSite& at : AllSites(clusters)) {
      for (Type& object : at.cluster->fleet->All<Type>(at.site.name)) {
        use(at, Object(std::move(object)));
      }
    }
  });
}

std::optional<Object> FindFleetObject(const kecpp::Fleet& fleet, const std::string& site,
                                      kecpp::Kind kind, const std::string& key) {
  return WithType(kind, [&](const auto& like) -> std::optional<Object> {
    auto found = fleet.Find<std::decay_t<decltype(like)>>(site, key);
    if (!found) return {};
    return Object(std::move(*found));
  });
}

const char* StateWord(const kecpp::Site& site) {
  if (!site.isLive) return "silent";
  if (site.state == kecpp::Site::State::syncing) return "syncing";
  return site.isConnected ? "complete" : "daemon lost";
}

std::string AgeWord(const kecpp::Site& site, std::chrono::system_clock::time_point now) {
  constexpr long long MINUTE = 60;
  constexpr long long HOUR = 60 * MINUTE;
  constexpr long long DAY = 24 * HOUR;
  if (site.asOf.time_since_epoch().count() == 0) return "-";
  const auto age = std::chrono::duration_cast<std::chrono::seconds>(now - site.asOf).count();
  if (age < 1) return "now";
  if (age < 2 * MINUTE) return std::to_string(age) + " s";
  if (age < 2 * HOUR) return std::to_string(age / MINUTE) + " min";
  if (age < 2 * DAY) return std::to_string(age / HOUR) + " h";
  return std::to_string(age / DAY) + " d";
}

}  // namespace tools::inventory
