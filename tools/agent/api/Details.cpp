// SPDX-License-Identifier: MIT
#include "tools/agent/api/Details.h"

#include <vector>

#include "tools/agent/api/Items.h"

namespace tools::agent::api {
namespace {

// Makes the details of one object.
class Detailer {
 public:
  explicit Detailer(const kecpp::Inventory& shown) : inventory(shown) {}

  Json Of(const kecpp::Host& host) const {
    HostInfo machines;
    for (const std::string& key : host.machines) {
      inventory.Look<kecpp::MachineView>(key, [&](const kecpp::MachineView& machine) {
        ++machines.byPower[static_cast<std::size_t>(PowerOf(machine.powerState))];
      });
    }
    Json json = ItemOf(kecpp::Kind::host, host.key, RowOf(host), &machines);
    json["description"] = host.description;
    json["uuid"] = host.uuid;
    json["operationalStatus"] = host.operationalStatus;
    return json;
  }

  Json Of(const kecpp::Machine& machine) const {
    Row row = RowOf(machine);
    HostTable::value_type host(machine.host.value_or(""), {});
    if (machine.host) {
      row.host = &host;
      inventory.Look<kecpp::HostView>(
          host.first, [&](const kecpp::HostView& view) { host.second.name = view.name; });
      host.second.name = kecpp::Decode(host.second.name);
    }
    Json json = ItemOf(kecpp::Kind::machine, machine.key, row, nullptr);
    json["description"] = machine.description;
    json["uuid"] = machine.uuid;
    json["path"] = machine.path;
    json["powerStateText"] = machine.powerStateText;
    json["operationalStatus"] = machine.operationalStatus;
    return json;
  }

  Json Of(const kecpp::Role& role) const {
    return {{"key", role.key},
            {"name", role.name},
            {"caption", role.caption},
            {"description", role.description},
            {"type", role.type},
            {"privileges", Privileges(role.privileges)},
            {"identities", Keys(role.identities)}};
  }

  Json Of(const kecpp::Privilege& privilege) const {
    return {{"key", privilege.key},
            {"name", privilege.name},
            {"roles", Roles(privilege.roles, [&](const kecpp::Role& role, Json& json) {
               json["identities"] = Keys(role.identities);
             })}};
  }

  Json Of(const kecpp::Identity& identity) const {
    return {{"key", identity.key},
            {"roles", Roles(identity.roles, [&](const kecpp::Role& role, Json& json) {
               json["privileges"] = Privileges(role.privileges);
             })}};
  }

 private:
  static Json Keys(const std::vector<std::string>& keys) {
    Json list = Json::array();
    for (const std::string& key : keys) list.push_back({{"key", key}});
    return list;
  }

  // A link that has lost its other end meanwhile is left out.
  Json Privileges(const std::vector<std::string>& keys) const {
    Json list = Json::array();
    for (const std::string& key : keys) {
      std::string name;
      const bool isThere = inventory.Look<kecpp::PrivilegeView>(
          key, [&](const kecpp::PrivilegeView& view) { name = view.name; });
      if (isThere) list.push_back({{"key", key}, {"name", kecpp::Decode(name)}});
    }
    return list;
  }

  template <class AddLinks>
  Json Roles(const std::vector<std::string>& keys, const AddLinks& addLinks) const {
    Json list = Json::array();
    for (const std::string& key : keys) {
      const auto role = inventory.FindRole(key);
      if (!role) continue;
      Json json = {{"key", key}, {"name", role->name}};
      addLinks(*role, json);
      list.push_back(std::move(json));
    }
    return list;
  }

  const kecpp::Inventory& inventory;
};

}  // namespace

std::string DetailsOf(kecpp::Kind kind, const std::string& key, const kecpp::Inventory& inventory) {
  const Detailer detailer(inventory);
  const auto text = [&](const auto& object) {
    return object ? Dump(detailer.Of(*object)) : std::string();
  };
  switch (kind) {
    case kecpp::Kind::host:
      return text(inventory.FindHost(key));
    case kecpp::Kind::machine:
      return text(inventory.FindMachine(key));
    case kecpp::Kind::role:
      return text(inventory.FindRole(key));
    case kecpp::Kind::privilege:
      return text(inventory.FindPrivilege(key));
    default:
      return text(inventory.FindIdentity(key));
  }
}

}  // namespace tools::agent::api
