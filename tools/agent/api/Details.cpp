// SPDX-License-Identifier: MIT
#include "tools/agent/api/Details.h"

#include <vector>

#include "tools/agent/api/Items.h"

namespace tools::agent::api {
namespace {

// Makes the details of one object.
class Detailer {
 public:
  Detailer(const kecpp::Inventory& shown, Catalogues& known)
      : inventory(shown), catalogues(known) {}

  Json Of(const kecpp::Host& host) const {
    Json json;
    catalogues.LookAtHost(host.key, [&](const HostTable::value_type& known) {
      json = ItemOf(kecpp::Kind::host, host.key, RowOf(host), &known.second);
    });
    json["description"] = host.description;
    json["uuid"] = host.uuid;
    json["operationalStatus"] = host.operationalStatus;
    return json;
  }

  Json Of(const kecpp::Machine& machine) const {
    Row row = RowOf(machine);
    Json json;
    const auto add = [&] { json = ItemOf(kecpp::Kind::machine, machine.key, row, nullptr); };
    if (machine.host) {
      catalogues.LookAtHost(*machine.host, [&](const HostTable::value_type& host) {
        row.host = &host;
        add();
      });
    } else {
      add();
    }
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
  Catalogues& catalogues;
};

}  // namespace

std::string DetailsOf(kecpp::Kind kind, const std::string& key, const kecpp::Inventory& inventory,
                      Catalogues& catalogues) {
  const Detailer detailer(inventory, catalogues);
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
