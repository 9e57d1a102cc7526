// SPDX-License-Identifier: MIT
//
// Who may do what on the simulated host, and the XML in which the authorization manager reports it.
// Texts are XML texts. Plain data, guarded by the inventory's mutex.
#ifndef KECPP_SIMULATOR_AUTHORIZATION_H
#define KECPP_SIMULATOR_AUTHORIZATION_H

#include <map>
#include <string>
#include <vector>

namespace sim {

struct Role {
  std::string id, name, label, summary;
  bool system = false;
  std::vector<std::string> privileges;  // identifiers, of privileges that exist or not
};

struct Permission {
  std::string principal, roleId;
  bool group = false;
};

struct Authorization {
  std::map<std::string, std::string> privileges;  // name by identifier
  std::map<std::string, Role> roles;              // by identifier
  std::vector<Permission> permissions;

  std::string PrivilegeItems() const;
  std::string RoleItems() const;
  std::string PermissionItems() const;  // "returnval" elements
};

// A few privileges, roles, users and a group.
Authorization MadeUpAuthorization();

}  // namespace sim

#endif
