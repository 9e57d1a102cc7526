// SPDX-License-Identifier: MIT
//
// A fleet's objects of any kind.
//
// Thread safety: any thread.
#ifndef KECPP_TOOLS_INVENTORY_FLEETOBJECTS_H
#define KECPP_TOOLS_INVENTORY_FLEETOBJECTS_H

#include <kecpp/fleet.h>

#include <functional>
#include <optional>
#include <string>

#include "tools/common/ObjectView.h"

namespace tools::inventory {

// By site and key.
void ForEachObject(const kecpp::Fleet& fleet, kecpp::Kind kind,
                   const std::function<void(const std::string& site, const Object&)>& use);

std::optional<Object> FindFleetObject(const kecpp::Fleet& fleet, const std::string& site,
                                      kecpp::Kind kind, const std::string& key);

// "complete", "syncing", "daemon lost" or "silent".
const char* StateWord(const kecpp::Site& site);

// How old what is known of the site is: "now", "12 s", "3 min", "5 h", "2 d"; "-" when nobody
// knows.
std::string AgeWord(const kecpp::Site& site, std::chrono::system_clock::time_point now);

}  // namespace tools::inventory

#endif
