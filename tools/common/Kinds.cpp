// SPDX-License-Identifier: MIT
#include "tools/common/Kinds.h"

#include <algorithm>
#include <string>

#include "tools/common/Split.h"

namespace tools {
namespace {

using namespace KE::Stub;
using KELib::KEString;
using KELib::Stub::KEAssocStubBase;
using KELib::Stub::KEStubBase;
using Form = Column::Form;

// The keys of the stubs that a stub is linked to, sorted. An association answers the name of one
// end with the stub at the other.
template <const char* const& assocClass, class Partner, KEString Partner::*key>
std::vector<std::string> Partners(KEStubBase& stub) {
  std::vector<std::string> keys;
  KEString assocName(assocClass);
  KEString endName(stub.GetStubClassName());
  for (auto it = stub.GetAssocIterator(assocName); !it.End(); ++it) {
    KEAssocStubBase* link = *it;  // null where a partner was deleted
    KEStubBase* partner = link ? link->GetAssocInstance(endName) : nullptr;
    if (partner) keys.emplace_back((static_cast<Partner*>(partner)->*key).Cstr());
  }
  std::sort(keys.begin(), keys.end());
  return keys;
}

template <const char* const& assocClass, class Partner, KEString Partner::*key>
bool AllKeys(KEStubBase& stub, std::string& out) {
  for (const std::string& one : Partners<assocClass, Partner, key>(stub)) out.append(one) += '\0';
  return true;
}

template <const char* const& assocClass, class Partner, KEString Partner::*key>
bool OneKey(KEStubBase& stub, std::string& out) {
  const std::vector<std::string> keys = Partners<assocClass, Partner, key>(stub);
  if (!keys.empty()) out += keys.front();
  return !keys.empty();
}

PropertyRow Many(const char* name, ReadValue read) {
  return {name, CimType::String, true, false, read, nullptr, nullptr};
}
PropertyRow One(const char* name, ReadValue read) {
  return {name, CimType::String, false, false, read, nullptr, nullptr};
}

constexpr auto& HOSTED = ZORBEL_HostedDependencyClass;
constexpr auto& PRIVILEGE_MEMBER = Zorbel_PrivilegeMemberOfCollectionClass;
constexpr auto& IDENTITY_MEMBER = Zorbel_IdentityMemberOfCollectionClass;

std::vector<Kind> MakeKinds() {
  return {
      {"hosts",
       "Hosts",
       ZORBEL_ORXComputerSystemClass,
       "HostSystem",
       "name summary.overallStatus hardware.systemInfo.uuid hardware.systemInfo.vendor "
       "hardware.systemInfo.model vm",
       Group::systems,
       "Name ElementName Description UUID Vendor Model OperationalStatus",
       {Many("machines", AllKeys<HOSTED, CIM_System, &CIM_System::Name>)},
       {{"NAME", "ElementName"},
        {"KEY", "Name"},
        {"STATUS", "OperationalStatus", Form::status},
        {"VENDOR", "Vendor"},
        {"MODEL", "Model"},
        {"MACHINES", "machines", Form::count}}},
      {"machines",
       "Machines",
       ZORBEL_VMComputerSystemClass,
       "VirtualMachine",
       "name config.annotation config.uuid config.files.vmPathName runtime.powerState runtime.host "
       "config.guestFullName guest.hostName guest.ipAddress",
       Group::systems,
       "Name ElementName Description UUID GuestFullName GuestHostName GuestIPAddress VMPathName "
       "PowerState OperationalStatus",
       {One("host", OneKey<HOSTED, CIM_System, &CIM_System::Name>)},
       {{"NAME", "ElementName"},
        {"KEY", "Name"},
        {"HOST", "host", Form::hostName},
        {"POWER", "PowerState"},
        {"STATUS", "OperationalStatus", Form::status},
        {"GUEST", "GuestFullName"},
        {"ADDRESS", "GuestIPAddress"}}},
      {"privileges",
       "Privileges",
       Zorbel_PrivilegeClass,
       "AuthorizationManager",
       "privilegeList roleList",
       Group::authorization,
       "InstanceID ElementName",
       {Many("roles", AllKeys<PRIVILEGE_MEMBER, Zorbel_Role, &Zorbel_Role::Name>)},
       {{"KEY", "InstanceID"}, {"NAME", "ElementName"}, {"ROLES", "roles", Form::items}}},
      {"roles",
       "Roles",
       Zorbel_RoleClass,
       nullptr,
       "",
       Group::authorization,
       "Name ElementName Caption Description RoleType",
       {Many("privileges",
             AllKeys<PRIVILEGE_MEMBER, Zorbel_Privilege, &Zorbel_Privilege::InstanceID>),
        Many("identities",
             AllKeys<IDENTITY_MEMBER, Zorbel_Identity, &Zorbel_Identity::InstanceID>)},
       {{"KEY", "Name"},
        {"NAME", "ElementName"},
        {"LABEL", "Caption"},
        {"TYPE", "RoleType"},
        {"PRIVILEGES", "privileges", Form::count},
        {"IDENTITIES", "identities", Form::items}}},
      {"identities",
       "Identities",
       Zorbel_IdentityClass,
       nullptr,
       "",
       Group::authorization,
       "InstanceID",
       {Many("roles", AllKeys<IDENTITY_MEMBER, Zorbel_Role, &Zorbel_Role::Name>)},
       {{"KEY", "InstanceID"}, {"ROLES", "roles", Form::items}}},
  };
}

const Kind* KindOf(const ClassRow& type) {
  for (const Kind& kind : Kinds()) {
    if (SameName(kind.className, type.name)) return &kind;
  }
  return nullptr;
}

}  // namespace

// Never freed: another thread may still read it while the process ends.
const std::vector<Kind>& Kinds() {
  static const auto& kinds = *new std::vector<Kind>(MakeKinds());
  return kinds;
}

const Kind* FindKind(std::string_view listName) {
  for (const Kind& kind : Kinds()) {
    if (listName == kind.name) return &kind;
  }
  return nullptr;
}

Group GroupOf(const ClassRow& type) {
  const Kind* kind = KindOf(type.isAssociation ? OriginOf(type) : type);
  return kind ? kind->group : Group::systems;
}

std::vector<const ClassRow*> ClassesOf(Group group) {
  std::vector<const ClassRow*> found;
  for (const ClassRow* type : AllClasses()) {
    const Kind* kind = KindOf(*type);
    if (kind && kind->group == group) found.push_back(type);
  }
  return found;
}

std::vector<ClassProperty> ValuesOf(const Kind& kind) {
  const ClassRow& type = *FindClass(kind.className);
  const std::vector<ClassProperty> all = PropertiesOf(type);
  std::vector<ClassProperty> values;
  for (const std::string_view name : Split(kind.properties, ' ')) {
    values.push_back(*std::find_if(all.begin(), all.end(), [&](const ClassProperty& property) {
      return property.row->name == name;
    }));
  }
  for (const PropertyRow& link : kind.links) values.push_back({&link, &type, true});
  return values;
}

}  // namespace tools
