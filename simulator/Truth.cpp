// SPDX-License-Identifier: MIT
#include "simulator/Truth.h"

#include <map>
#include <set>

#include "simulator/Kinds.h"

namespace sim {

namespace {

using nlohmann::json;
using Ids = std::set<std::string>;
using ByKey = std::map<std::string, json>;

json Values(ByKey from) {
  json list = json::array();
  for (auto& entry : from) list.push_back(std::move(entry.second));
  return list;
}

json Objects(const Inventory& inventory, const Kind& kind) {
  ByKey found;
  for (const Object* object : inventory.FindLocked(kind.folder)->members) {
    found[object->id] = kind.describe(*object);
  }
  return Values(std::move(found));
}

// Memberships, only between roles, privileges and users that exist.
struct Memberships {
  explicit Memberships(const Authorization& all) {
    for (const auto& [id, role] : all.roles) {
      for (const std::string& privilege : role.privileges) {
        if (all.privileges.count(privilege) == 0) continue;
        privilegesOfRole[id].insert(privilege);
        rolesOfPrivilege[privilege].insert(id);
      }
    }
    for (const Permission& permission : all.permissions) {
      if (permission.group) continue;
      Ids& held = rolesOfIdentity[permission.principal];
      if (all.roles.count(permission.roleId) == 0) continue;
      held.insert(permission.roleId);
      identitiesOfRole[permission.roleId].insert(permission.principal);
    }
  }
  std::map<std::string, Ids> privilegesOfRole, rolesOfPrivilege, rolesOfIdentity, identitiesOfRole;
};

void DescribeAuthorization(const Authorization& all, json& truth) {
  Memberships members(all);
  ByKey roles, privileges, identities;
  for (const auto& [id, role] : all.roles) {
    roles[id] = {{"Name", id},
                 {"ElementName", role.name},
                 {"Caption", role.label},
                 {"Description", role.summary},
                 {"RoleType", role.system ? "SystemDefined" : "UserDefined"},
                 {"privileges", members.privilegesOfRole[id]},
                 {"identities", members.identitiesOfRole[id]}};
  }
  for (const auto& [id, name] : all.privileges) {
    privileges[id] = {
        {"InstanceID", id}, {"ElementName", name}, {"roles", members.rolesOfPrivilege[id]}};
  }
  for (const auto& [principal, held] : members.rolesOfIdentity) {
    identities[principal] = {{"InstanceID", principal}, {"roles", held}};
  }
  truth["privileges"] = Values(std::move(privileges));
  truth["roles"] = Values(std::move(roles));
  truth["identities"] = Values(std::move(identities));
}

}  // namespace

json Truth(Inventory& inventory) {
  const std::lock_guard<std::mutex> lock(inventory.Mutex());
  json truth;
  for (const Kind& kind : Kinds()) truth[kind.plural] = Objects(inventory, kind);
  DescribeAuthorization(inventory.AuthorizationLocked(), truth);
  return truth;
}

}  // namespace sim
