// SPDX-License-Identifier: MIT
//
// The inventory as tables for people.
#ifndef KECPP_TOOLS_INVENTORY_INVENTORYTABLE_H
#define KECPP_TOOLS_INVENTORY_INVENTORYTABLE_H

#include <string>

#include "tools/inventory/Lists.h"
#include "tools/inventory/Model.h"
#include "tools/inventory/TextTable.h"

namespace tools::inventory {

// The tables of these lists, within `room`, objects by key.
std::string ToTables(const Model& inventory, const Lists& lists, const TableRoom& room);

}  // namespace tools::inventory

#endif
