// SPDX-License-Identifier: MIT
#include "tools/inventory/InventoryTable.h"

#include <kecpp.h>

#include <unordered_map>

namespace tools::inventory {
namespace {

std::string Decoded(const std::string& xmlText) {
  KELib::KEString decoded;
  KELib::Xml::DecodeEntities(xmlText.c_str(), decoded);
  return decoded.Cstr();
}

std::string Joined(const std::vector<std::string>& keys) {
  std::string all;
  for (const std::string& key : keys) all += (all.empty() ? "" : ", ") + Decoded(key);
  return all;
}

std::string HostTable(const Systems& systems, const TableRoom& room) {
  TextTable table("Hosts", {"NAME", "KEY", "STATUS", "VENDOR", "MODEL", "MACHINES"});
  for (const Host& host : systems.hosts) {
    table.AddRow({Decoded(host.elementName), Decoded(host.name), StatusWord(host.operationalStatus),
                  Decoded(host.vendor), Decoded(host.model), std::to_string(host.machines.size())});
  }
  return table.Format(room);
}

std::string MachineTable(const Systems& systems, const TableRoom& room) {
  std::unordered_map<std::string, std::string> hostNames;
  for (const Host& host : systems.hosts) hostNames[host.name] = host.elementName;
  TextTable table("Machines", {"NAME", "KEY", "HOST", "POWER", "STATUS", "GUEST", "ADDRESS"});
  for (const Machine& machine : systems.machines) {
    const std::string host = machine.host ? hostNames[*machine.host] : "-";
    table.AddRow({Decoded(machine.elementName), Decoded(machine.name), Decoded(host),
                  Decoded(machine.powerState), StatusWord(machine.operationalStatus),
                  Decoded(machine.guestFullName), Decoded(machine.guestIPAddress)});
  }
  return table.Format(room);
}

std::string PrivilegeTable(const Authorization& all, const TableRoom& room) {
  TextTable table("Privileges", {"KEY", "NAME", "ROLES"});
  for (const Privilege& privilege : all.privileges) {
    table.AddRow(
        {Decoded(privilege.instanceID), Decoded(privilege.elementName), Joined(privilege.roles)});
  }
  return table.Format(room);
}

std::string RoleTable(const Authorization& all, const TableRoom& room) {
  TextTable table("Roles", {"KEY", "NAME", "LABEL", "TYPE", "PRIVILEGES", "IDENTITIES"});
  for (const Role& role : all.roles) {
    table.AddRow({Decoded(role.name), Decoded(role.elementName), Decoded(role.caption),
                  Decoded(role.roleType), std::to_string(role.privileges.size()),
                  Joined(role.identities)});
  }
  return table.Format(room);
}

std::string IdentityTable(const Authorization& all, const TableRoom& room) {
  TextTable table("Identities", {"KEY", "ROLES"});
  for (const Identity& identity : all.identities) {
    table.AddRow({Decoded(identity.instanceID), Joined(identity.roles)});
  }
  return table.Format(room);
}

}  // namespace

std::string StatusWord(unsigned operationalStatus) {
  switch (operationalStatus) {
    case 0:
      return "unknown";
    case 2:
      return "OK";
    case 3:
      return "degraded";
    case 6:
      return "error";
    case 10:
      return "stopped";
    case 15:
      return "dormant";
    default:
      return std::to_string(operationalStatus);
  }
}

std::string ToTables(const InventoryCopy& inventory, const Lists& lists, const TableRoom& room) {
  std::string text;
  auto add = [&text](const std::string& table) { text += (text.empty() ? "" : "\n") + table; };
  if (lists.hosts) add(HostTable(inventory.systems, room));
  if (lists.machines) add(MachineTable(inventory.systems, room));
  if (lists.privileges) add(PrivilegeTable(inventory.authorization, room));
  if (lists.roles) add(RoleTable(inventory.authorization, room));
  if (lists.identities) add(IdentityTable(inventory.authorization, room));
  return text;
}

}  // namespace tools::inventory
