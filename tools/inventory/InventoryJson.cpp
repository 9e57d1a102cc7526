// SPDX-License-Identifier: MIT
#include "tools/inventory/InventoryJson.h"

#include <nlohmann/json.hpp>

#include "tools/common/ObjectJson.h"

namespace tools::inventory {

std::string ToJson(const Model& inventory, const Lists& lists) {
  auto document = nlohmann::ordered_json::object();
  for (const Kind* kind : lists) {
    auto& list = document[kind->name] = nlohmann::ordered_json::array();
    for (const auto& [key, object] : inventory.Of(kind->kind)) {
      list.push_back(ObjectJson(*kind, object));
    }
  }
  return LineOf(document);
}

}  // namespace tools::inventory
