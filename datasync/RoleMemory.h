// SPDX-License-Identifier: MIT
//
// Which privileges each role was last reported to hold. Roles may be reported before their
// privileges: the links are then made when the privileges arrive.
//
// Thread safety: guarded by the filter-table mutex. Size: what the server's last list of roles
// named.
#ifndef KECPP_DATASYNC_ROLEMEMORY_H
#define KECPP_DATASYNC_ROLEMEMORY_H

#include <iterator>
#include <string>
#include <unordered_map>
#include <vector>

#include "foundation/KEHashmap.h"
#include "foundation/KEString.h"

namespace KE::Service {

class RoleMemory {
 public:
  using PrivilegeIds = std::vector<KELib::KEString>;

  // Replaces what is known of a role.
  void Remember(const KELib::KEString& role, PrivilegeIds&& privileges) {
    known[role.Cstr()] = std::move(privileges);
  }

  // Null for a role that no list has named.
  PrivilegeIds* Of(const KELib::KEString& role) {
    auto found = known.find(role.Cstr());
    return found != known.end() ? &found->second : nullptr;
  }

  // Forgets the roles that are not among `named`.
  void KeepOnly(KELib::KEHashmap<KELib::KEString, bool>& named) {
    for (auto it = known.begin(); it != known.end();) {
      KELib::KEString role(it->first.c_str());
      it = named.Contains(role) ? std::next(it) : known.erase(it);
    }
  }

  void Clear() { known.clear(); }

 private:
  std::unordered_map<std::string, PrivilegeIds> known;
};

}  // namespace KE::Service

#endif
