// SPDX-License-Identifier: MIT
//
// The lists that are shown: kinds, in the order of Kinds().
#ifndef KECPP_TOOLS_INVENTORY_LISTS_H
#define KECPP_TOOLS_INVENTORY_LISTS_H

#include <algorithm>
#include <vector>

#include "tools/common/Kinds.h"

namespace tools::inventory {

using Lists = std::vector<const Kind*>;

inline bool HasGroup(const Lists& lists, Group group) {
  return std::any_of(lists.begin(), lists.end(),
                     [group](const Kind* kind) { return kind->group == group; });
}

inline bool HasKind(const Lists& lists, kecpp::Kind kind) {
  return std::any_of(lists.begin(), lists.end(),
                     [kind](const Kind* row) { return row->kind == kind; });
}

}  // namespace tools::inventory

#endif
