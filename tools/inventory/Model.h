// SPDX-License-Identifier: MIT
//
// The inventory as it is shown: copies of its objects, kept true by a follower's changes.
//
// Thread safety: none.
#ifndef KECPP_TOOLS_INVENTORY_MODEL_H
#define KECPP_TOOLS_INVENTORY_MODEL_H

#include <kecpp/inventory.h>

#include <array>
#include <map>
#include <string>
#include <vector>

#include "tools/common/ObjectView.h"

namespace tools::inventory {

using Objects = std::map<std::string, Object>;  // by key

class Model {
 public:
  // Copies what has changed and forgets what has gone. What left after a change was noted counts as
  // gone.
  void Apply(const std::vector<kecpp::Change>& changes, const kecpp::Inventory& inventory);

  void Put(kecpp::Kind kind, const std::string& key, Object object) {
    Room(kind).insert_or_assign(key, std::move(object));
  }

  // Null when it is not there.
  const Object* Find(kecpp::Kind kind, const std::string& key) const;
  const Objects& Of(kecpp::Kind kind) const { return objects[static_cast<std::size_t>(kind)]; }

 private:
  Objects& Room(kecpp::Kind kind) { return objects[static_cast<std::size_t>(kind)]; }

  std::array<Objects, 5> objects;
};

}  // namespace tools::inventory

#endif
