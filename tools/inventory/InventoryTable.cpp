// SPDX-License-Identifier: MIT
#include "tools/inventory/InventoryTable.h"

#include "tools/inventory/ObjectTable.h"

namespace tools::inventory {

std::string ToTables(const Model& inventory, const Lists& lists, const TableRoom& room) {
  const auto nameOf = [&](const std::string& key) {
    const Object* host = inventory.Find(kecpp::Kind::host, key);
    return host ? std::get<kecpp::Host>(*host).name : std::string();
  };
  std::string text;
  for (const Kind* kind : lists) {
    ObjectTable table(*kind);
    for (const auto& [key, object] : inventory.Of(kind->kind)) table.Add(object, nameOf);
    text += (text.empty() ? "" : "\n") + table.Format(room);
  }
  return text;
}

}  // namespace tools::inventory
