// SPDX-License-Identifier: MIT
#include "simulator/Authorization.h"

namespace sim {

namespace {

const char* Truth(bool value) {
  return value ? "true" : "false";
}

}  // namespace

std::string Authorization::PrivilegeItems() const {
  std::string xml;
  for (const auto& [id, name] : privileges) {
    xml.append("<AuthorizationPrivilege><privId>").append(id).append("</privId><name>");
    xml.append(name).append("</name></AuthorizationPrivilege>");
  }
  return xml;
}

std::string Authorization::RoleItems() const {
  std::string xml;
  for (const auto& [id, role] : roles) {
    xml += "<AuthorizationRole><roleId>" + id + "</roleId><system>" + Truth(role.system) +
           "</system><name>" + role.name + "</name><info><label>" + role.label +
           "</label><summary>" + role.summary + "</summary></info>";
    for (const std::string& privilege : role.privileges) {
      xml += "<privilege>" + privilege + "</privilege>";
    }
    xml += "</AuthorizationRole>";
  }
  return xml;
}

std::string Authorization::PermissionItems() const {
  std::string xml;
  for (const Permission& permission : permissions) {
    xml += "<returnval><principal>" + permission.principal + "</principal><group>" +
           Truth(permission.group) + "</group><roleId>" + permission.roleId +
           "</roleId></returnval>";
  }
  return xml;
}

Authorization MadeUpAuthorization() {
  Authorization made;
  made.privileges = {
      {"P.View", "View"}, {"P.Start", "Start &amp; stop"}, {"P.Admin", "Administer"}};
  made.roles["1"] = {
      "1", "Admin", "Administrator", "May do everything", true, {"P.View", "P.Start", "P.Admin"}};
  made.roles["7"] = {"7", "Op", "Operator", "Runs machines", false, {"P.View", "P.Start"}};
  made.permissions = {{"root", "1", false}, {"ann", "7", false}, {"staff", "7", true}};
  return made;
}

}  // namespace sim
