// SPDX-License-Identifier: MIT
//
// Objects and changes as JSON (tools/inventory/schema/kecpp-inventory.schema.json describes them).
// Bytes that are not UTF-8 are replaced.
//
// Thread safety: any thread.
#ifndef KECPP_TOOLS_COMMON_OBJECTJSON_H
#define KECPP_TOOLS_COMMON_OBJECTJSON_H

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "tools/common/Kinds.h"
#include "tools/common/ObjectView.h"

namespace tools {

// "added", "changed" or "removed".
const char* WordFor(kecpp::Change::Type type);

// One object, with all that is shown of its kind.
nlohmann::ordered_json ObjectJson(const Kind& kind, const Object& copy);
std::string ToJson(const Kind& kind, const ObjectView& object);

// One line, without its end: what became of which object and, unless it was removed, the object.
std::string ToJson(const kecpp::Change& change, const Object* object);

// The text of `json` on one line.
std::string LineOf(const nlohmann::ordered_json& json);

// The lines of these changes, of the kinds that `isShown` takes. An object that has gone since has
// none: it is told as removed later.
template <class IsShown>
std::string EventLines(const std::vector<kecpp::Change>& changes, const kecpp::Inventory& inventory,
                       IsShown isShown) {
  std::string lines;
  for (const kecpp::Change& change : changes) {
    if (!isShown(change.kind)) continue;
    Object object;
    const bool isRemoved = change.type == kecpp::Change::Type::removed;
    if (!isRemoved && !FindObject(inventory, change.kind, change.key, object)) continue;
    lines += ToJson(change, isRemoved ? nullptr : &object) + '\n';
  }
  return lines;
}

}  // namespace tools

#endif
