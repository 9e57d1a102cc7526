// SPDX-License-Identifier: MIT
//
// A copy of what the caches hold, so that nothing is read from a cache after its mutex was let go:
// for each kind the rows of its objects, or none when the kind was not read. The columns of a row
// are ValuesOf its kind.
#ifndef KECPP_TOOLS_COMMON_INVENTORYCOPY_H
#define KECPP_TOOLS_COMMON_INVENTORYCOPY_H

#include <vector>

#include "tools/common/Kinds.h"
#include "tools/common/Rows.h"

namespace tools {

class InventoryCopy {
 public:
  InventoryCopy() {
    for (const Kind& kind : Kinds()) rows.emplace_back(*FindClass(kind.className), ValuesOf(kind));
  }

  // `kind` is one of Kinds().
  Rows& Of(const Kind& kind) { return rows[Place(kind)]; }
  const Rows& Of(const Kind& kind) const { return rows[Place(kind)]; }

 private:
  static std::size_t Place(const Kind& kind) {
    return static_cast<std::size_t>(&kind - Kinds().data());
  }

  std::vector<Rows> rows;
};

}  // namespace tools

#endif
