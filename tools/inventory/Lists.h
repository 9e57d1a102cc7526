// SPDX-License-Identifier: MIT
//
// The lists that kecpp-inventory can show.
#ifndef KECPP_TOOLS_INVENTORY_LISTS_H
#define KECPP_TOOLS_INVENTORY_LISTS_H

namespace tools::inventory {

// Which lists are shown.
struct Lists {
  bool hosts = false;
  bool machines = false;
  bool privileges = false;
  bool roles = false;
  bool identities = false;

  bool Systems() const { return hosts || machines; }
  bool Authorization() const { return privileges || roles || identities; }
};

}  // namespace tools::inventory

#endif
