// SPDX-License-Identifier: MIT
//
// Which keys of the cluster a Fleet reads, and what is under them.
//
// Thread safety: any thread.
#ifndef KECPP_INVENTORY_FLEETSCOPE_H
#define KECPP_INVENTORY_FLEETSCOPE_H

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "fleet/Watch.h"
#include "inventory/FleetStore.h"

namespace kecpp {

class FleetScope {
 public:
  // `sites` is FleetOptions'.
  explicit FleetScope(std::string sites);

  const std::vector<fleet::WatchRange>& Ranges() const { return ranges; }

  // What an event or a key that was read says; nothing when it is no matter of the fleet's. What is
  // there but cannot be read is given to `skip`, with the reason, and is as if it were not there.
  using Skip = std::function<void(const std::string& key, const char* reason)>;
  std::optional<FleetNews> Read(const fleet::WatchEvent& event, const Skip& skip) const;

 private:
  void AddRange(std::string_view begin, std::string_view rest, bool isOne);
  std::optional<std::string> SiteNamed(std::string_view part) const;

  const std::string pattern;
  std::vector<fleet::WatchRange> ranges;
};

}  // namespace kecpp

#endif
