// SPDX-License-Identifier: MIT
//
// The inventory as one line of JSON.
#ifndef KECPP_TOOLS_INVENTORY_INVENTORYJSON_H
#define KECPP_TOOLS_INVENTORY_INVENTORYJSON_H

#include <string>

#include "tools/common/InventoryCopy.h"
#include "tools/inventory/Lists.h"

namespace tools::inventory {

// One document without a line end: these lists, each sorted by key. A byte sequence that is not
// UTF-8 becomes U+FFFD.
std::string ToJson(const InventoryCopy& inventory, const Lists& lists);

}  // namespace tools::inventory

#endif
