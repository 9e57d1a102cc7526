// SPDX-License-Identifier: MIT
#include "tools/inventory/Model.h"

namespace tools::inventory {

void Model::Apply(const std::vector<kecpp::Change>& changes, const kecpp::Inventory& inventory) {
  for (const kecpp::Change& change : changes) {
    Object object;
    if (change.type != kecpp::Change::Type::removed &&
        FindObject(inventory, change.kind, change.key, object)) {
      Put(change.kind, change.key, std::move(object));
    } else {
      Room(change.kind).erase(change.key);
    }
  }
}

const Object* Model::Find(kecpp::Kind kind, const std::string& key) const {
  const auto found = Of(kind).find(key);
  return found == Of(kind).end() ? nullptr : &found->second;
}

}  // namespace tools::inventory
