// SPDX-License-Identifier: MIT
//
// A fleet as tables, as JSON and as events (schema/kecpp-inventory.schema.json describes the last
// two): as an inventory, with the site of each object, and the sites themselves; with the cluster
// of each where there are several.
//
// Thread safety: any thread.
#ifndef KECPP_TOOLS_INVENTORY_FLEETTEXT_H
#define KECPP_TOOLS_INVENTORY_FLEETTEXT_H

#include <kecpp/fleet.h>

#include <string>
#include <vector>

#include "tools/inventory/FleetObjects.h"
#include "tools/inventory/Lists.h"
#include "tools/inventory/TextTable.h"

namespace tools::inventory {

// The sites, then these lists.
std::string FleetTables(const Clusters& clusters, const Lists& lists, const TableRoom& room);

// One line, with its end.
std::string FleetJson(const Clusters& clusters, const Lists& lists);

// The lines of these changes. What has gone since has none: it is told as removed later.
std::string FleetEventLines(const std::vector<kecpp::FleetChange>& changes, const Cluster& cluster,
                            const Lists& lists);

}  // namespace tools::inventory

#endif
