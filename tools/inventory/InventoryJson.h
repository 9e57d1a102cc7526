// SPDX-License-Identifier: MIT
//
// The inventory as JSON (schema/inventory.schema.json describes it). Bytes that are not UTF-8 are
// replaced.
//
// Thread safety: any thread.
#ifndef KECPP_TOOLS_INVENTORY_INVENTORYJSON_H
#define KECPP_TOOLS_INVENTORY_INVENTORYJSON_H

#include <string>

#include "tools/inventory/Lists.h"
#include "tools/inventory/Model.h"

namespace tools::inventory {

// One object, with all that is shown of its kind.
std::string ToJson(const Kind& kind, const ObjectView& object);

// One document of one line: each list by name, objects by key.
std::string ToJson(const Model& inventory, const Lists& lists);

// One line, without its end: what became of which object and, unless it was removed, the object.
std::string ToJson(const kecpp::Change& change, const Object* object);

}  // namespace tools::inventory

#endif
