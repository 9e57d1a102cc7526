// SPDX-License-Identifier: MIT
//
// What the inventory of one connection has different from that of another.
//
// Thread safety: any thread; takes the mutexes of the caches of both, one connection's at a time,
//   for some hundred objects at a time.
#ifndef KECPP_INVENTORY_DIFFERENCES_H
#define KECPP_INVENTORY_DIFFERENCES_H

#include <kecpp/inventory.h>

#include <string>
#include <vector>

#include "inventory/Connection.h"

namespace kecpp {

// In `now` but not in `before`: added. In both, with other content: changed. Else removed. Linear.
std::vector<Change> FindDifferences(const Connection& before, const Connection& now);

// Only what was removed.
std::vector<Change> FindGone(const Connection& before, const Connection& now);

// Whether the connection has the object cached.
bool Holds(const Connection& connection, Kind kind, const std::string& key);

}  // namespace kecpp

#endif
