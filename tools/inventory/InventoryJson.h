// SPDX-License-Identifier: MIT
//
// The inventory as JSON (schema/kecpp-inventory.schema.json describes it). Bytes that are not UTF-8
// are replaced.
//
// Thread safety: any thread.
#ifndef KECPP_TOOLS_INVENTORY_INVENTORYJSON_H
#define KECPP_TOOLS_INVENTORY_INVENTORYJSON_H

#include <string>

#include "tools/inventory/Lists.h"
#include "tools/inventory/Model.h"

namespace tools::inventory {

// One document of one line: each list by name, objects by key.
std::string ToJson(const Model& inventory, const Lists& lists);

}  // namespace tools::inventory

#endif
