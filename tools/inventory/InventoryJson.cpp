// SPDX-License-Identifier: MIT
#include "tools/inventory/InventoryJson.h"

#include <nlohmann/json.hpp>

// The JSON library looks for these beside their types.
namespace tools {

using Json = nlohmann::ordered_json;

static void to_json(Json& json, const Host& host) {
  json = Json{{"Name", host.name},
              {"ElementName", host.elementName},
              {"Description", host.description},
              {"UUID", host.uuid},
              {"Vendor", host.vendor},
              {"Model", host.model},
              {"OperationalStatus", host.operationalStatus},
              {"machines", host.machines}};
}

static void to_json(Json& json, const Machine& machine) {
  json = Json{{"Name", machine.name},
              {"ElementName", machine.elementName},
              {"Description", machine.description},
              {"UUID", machine.uuid},
              {"GuestFullName", machine.guestFullName},
              {"GuestHostName", machine.guestHostName},
              {"GuestIPAddress", machine.guestIPAddress},
              {"VMPathName", machine.vmPathName},
              {"PowerState", machine.powerState},
              {"OperationalStatus", machine.operationalStatus},
              {"host", machine.host ? Json(*machine.host) : Json(nullptr)}};
}

static void to_json(Json& json, const Privilege& privilege) {
  json = Json{{"InstanceID", privilege.instanceID},
              {"ElementName", privilege.elementName},
              {"roles", privilege.roles}};
}

static void to_json(Json& json, const Role& role) {
  json = Json{{"Name", role.name},
              {"ElementName", role.elementName},
              {"Caption", role.caption},
              {"Description", role.description},
              {"RoleType", role.roleType},
              {"privileges", role.privileges},
              {"identities", role.identities}};
}

static void to_json(Json& json, const Identity& identity) {
  json = Json{{"InstanceID", identity.instanceID}, {"roles", identity.roles}};
}

}  // namespace tools

namespace tools::inventory {

std::string ToJson(const InventoryCopy& inventory, const Lists& lists) {
  Json document = Json::object();
  if (lists.hosts) document["hosts"] = inventory.systems.hosts;
  if (lists.machines) document["machines"] = inventory.systems.machines;
  if (lists.privileges) document["privileges"] = inventory.authorization.privileges;
  if (lists.roles) document["roles"] = inventory.authorization.roles;
  if (lists.identities) document["identities"] = inventory.authorization.identities;
  return document.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace tools::inventory
