// SPDX-License-Identifier: MIT
#include "simulator/Truth.h"

#include <map>
#include <set>

namespace sim {

namespace {

using nlohmann::json;
using Ids = std::set<std::string>;
using ByKey = std::map<std::string, json>;

unsigned int StatusOfPower(const std::string& state) {
  if (state == "poweredOn") return 2;
  if (state == "poweredOff") return 10;
  return state == "suspended" ? 15 : 0;
}

unsigned int StatusOfHost(const std::string& status) {
  if (status == "green") return 2;
  if (status == "yellow") return 3;
  return status == "red" ? 6 : 0;
}

json Host(const Object& host) {
  Ids machines;
  for (const Object* machine : host.members) machines.insert(machine->id);
  return {{"Name", host.id},
          {"ElementName", host.Text("name")},
          {"Description", ""},
          {"UUID", host.Text("hardware.systemInfo.uuid")},
          {"Vendor", host.Text("hardware.systemInfo.vendor")},
          {"Model", host.Text("hardware.systemInfo.model")},
          {"OperationalStatus", StatusOfHost(host.Text("summary.overallStatus"))},
          {"machines", machines}};
}

json Machine(const Object& machine) {
  const std::string host = machine.Text("runtime.host");
  return {{"Name", machine.id},
          {"ElementName", machine.Text("name")},
          {"Description", machine.Text("config.annotation")},
          {"UUID", machine.Text("config.uuid")},
          {"GuestFullName", machine.Text("config.guestFullName")},
          {"GuestHostName", machine.Text("guest.hostName")},
          {"GuestIPAddress", machine.Text("guest.ipAddress")},
          {"VMPathName", machine.Text("config.files.vmPathName")},
          {"PowerState", machine.Text("runtime.powerState")},
          {"OperationalStatus", StatusOfPower(machine.Text("runtime.powerState"))},
          {"host", host.empty() ? json(nullptr) : json(host)}};
}

json Values(ByKey from) {
  json list = json::array();
  for (auto& entry : from) list.push_back(std::move(entry.second));
  return list;
}

json Members(const Inventory& inventory, const char* folder, json (*describe)(const Object&)) {
  ByKey found;
  for (const Object* member : inventory.FindLocked(folder)->members) {
    found[member->id] = describe(*member);
  }
  return Values(std::move(found));
}

// Who belongs to what: only between roles, privileges and users that exist.
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
  const Inventory& objects = inventory;
  json truth = {{"hosts", Members(objects, Inventory::kHosts, Host)},
                {"machines", Members(objects, Inventory::kMachines, Machine)}};
  DescribeAuthorization(objects.AuthorizationLocked(), truth);
  return truth;
}

}  // namespace sim
