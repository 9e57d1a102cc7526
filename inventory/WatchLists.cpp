// SPDX-License-Identifier: MIT
#include "inventory/WatchLists.h"

#include <initializer_list>

namespace kecpp {
namespace {

using namespace KE::Service;
using namespace KE::Stub;

void Fill(KELib::KEVector<KELib::KEString>& list, std::initializer_list<const char*> elements) {
  for (const char* element : elements) list.Add(KELib::KEString(element));
}

}  // namespace

void ListSystems(KELib::KEVector<KELib::KEString>& list) {
  Fill(list, {PropSep, ObjectSep, "HostSystem", "name", "summary.overallStatus",
              "hardware.systemInfo.uuid", "hardware.systemInfo.vendor", "hardware.systemInfo.model",
              "vm"});
  Fill(list, {PropSep, ObjectSep, "VirtualMachine", "name", "config.annotation", "config.uuid",
              "config.files.vmPathName", "runtime.powerState", "runtime.host",
              "config.guestFullName", "guest.hostName", "guest.ipAddress"});
  Fill(list, {TraversalSep, "folderWalk", ObjectSep, "Folder", PropSep, "childEntity", SelectSep,
              "folderWalk"});
  Fill(list, {CacheObjectSep, ZORBEL_VMComputerSystemClass, ZORBEL_ORXComputerSystemClass});
}

void ListAuthorization(KELib::KEVector<KELib::KEString>& list) {
  Fill(list, {PropSep, ObjectSep, "AuthorizationManager", "privilegeList", "roleList"});
  Fill(list, {CacheObjectSep, Zorbel_RoleClass, Zorbel_PrivilegeClass});
}

void ListPermissions(KELib::KEVector<KELib::KEString>& list) {
  Fill(list, {MethodSep, "RetrieveAllPermissions", CacheObjectSep, Zorbel_RoleClass,
              Zorbel_IdentityClass});
}

}  // namespace kecpp
