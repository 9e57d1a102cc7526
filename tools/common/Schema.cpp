// SPDX-License-Identifier: MIT
#include "tools/common/Schema.h"

#include <strings.h>

#include <charconv>
#include <iterator>

namespace tools {
namespace {

using namespace KE::Stub;
using KELib::KEString;
using KELib::Stub::KEStubBase;

// A field of a stub whose class is known from the cache that it is in.
template <class Stub, KEString Stub::*field>
bool Field(KEStubBase& stub, std::string& out) {
  out += (static_cast<Stub&>(stub).*field).Cstr();
  return true;
}

// A field of a base that not every class of the table has in the library: identities are stubs and
// no managed elements.
template <KEString CIM_ManagedElement::*field>
bool ElementField(KEStubBase& stub, std::string& out) {
  auto* element = dynamic_cast<CIM_ManagedElement*>(&stub);
  if (element) out += (element->*field).Cstr();
  return element != nullptr;
}

bool ClassName(KEStubBase& stub, std::string& out) {
  out += stub.GetStubClassName();
  return true;
}

// A list of one.
bool Status(KEStubBase& stub, std::string& out) {
  char digits[8] = {};
  const unsigned status = static_cast<CIM_ComputerSystem&>(stub).OperationalStatus;
  out.append(digits, std::to_chars(digits, std::end(digits), status).ptr) += '\0';
  return true;
}

constexpr PropertyRow Key(const char* name, ReadValue read, const char* description) {
  return {name, CimType::String, false, true, read, nullptr, description};
}
constexpr PropertyRow Text(const char* name, ReadValue read, const char* description) {
  return {name, CimType::String, false, false, read, nullptr, description};
}
constexpr PropertyRow End(const char* role, const char* type, const char* description) {
  return {role, CimType::Reference, false, true, nullptr, type, description};
}

constexpr PropertyRow CREATION_CLASS =
    Key(CREATION_CLASS_NAME, ClassName, "The class that the instance was made of.");

constexpr PropertyRow MANAGED_ELEMENT[] = {
    Text("Caption", ElementField<&CIM_ManagedElement::Caption>, "A short label."),
    Text("Description", ElementField<&CIM_ManagedElement::Description>, "Free text."),
    Text("ElementName", ElementField<&CIM_ManagedElement::ElementName>, "The display name."),
};
constexpr PropertyRow SYSTEM[] = {
    CREATION_CLASS,
    Key("Name", Field<CIM_System, &CIM_System::Name>, "The daemon's identifier of the object."),
};
constexpr PropertyRow COMPUTER_SYSTEM[] = {
    {"OperationalStatus", CimType::UInt16, true, false, Status, nullptr,
     "0 unknown, 2 OK, 3 degraded, 6 error, 10 stopped, 15 dormant."},
};
using Host = ZORBEL_ORXComputerSystem;
constexpr PropertyRow HOST[] = {
    Text("UUID", Field<Host, &Host::UUID>, "The hardware's UUID."),
    Text("Vendor", Field<Host, &Host::Vendor>, "The hardware's maker."),
    Text("Model", Field<Host, &Host::Model>, "The hardware's model."),
};
using Machine = ZORBEL_VMComputerSystem;
constexpr PropertyRow MACHINE[] = {
    Text("UUID", Field<Machine, &Machine::UUID>, "The machine's UUID."),
    Text("GuestFullName", Field<Machine, &Machine::GuestFullName>, "The guest's system."),
    Text("GuestHostName", Field<Machine, &Machine::GuestHostName>, "The guest's host name."),
    Text("GuestIPAddress", Field<Machine, &Machine::GuestIPAddress>, "The guest's address."),
    Text("VMPathName", Field<Machine, &Machine::VMPathName>, "The machine's file."),
    Text("PowerState", Field<Machine, &Machine::PowerState>,
         "poweredOn, poweredOff or suspended, as the daemon says it."),
};
constexpr PropertyRow ROLE[] = {
    CREATION_CLASS,
    Key("Name", Field<Zorbel_Role, &Zorbel_Role::Name>, "The daemon's identifier of the role."),
    Text("RoleType", Field<Zorbel_Role, &Zorbel_Role::RoleType>, "SystemDefined or UserDefined."),
};
constexpr PropertyRow PRIVILEGE[] = {
    CREATION_CLASS,
    Key("InstanceID", Field<Zorbel_Privilege, &Zorbel_Privilege::InstanceID>,
        "The daemon's identifier of the privilege."),
};
constexpr PropertyRow IDENTITY[] = {
    CREATION_CLASS,
    Key("InstanceID", Field<Zorbel_Identity, &Zorbel_Identity::InstanceID>,
        "The name of the user or group."),
};
constexpr PropertyRow DEPENDENCY[] = {
    End("Antecedent", "CIM_ManagedElement", "What the other end depends on."),
    End("Dependent", "CIM_ManagedElement", "What depends on the other end."),
};
constexpr PropertyRow HOSTED_DEPENDENCY[] = {
    End("Antecedent", "ZORBEL_ORXComputerSystem", "The host."),
    End("Dependent", "ZORBEL_VMComputerSystem", "The machine that runs on it."),
};
constexpr PropertyRow MEMBER[] = {
    End("Collection", "Zorbel_Collection", "The collection."),
    End("Member", "CIM_ManagedElement", "A member of it."),
};
constexpr PropertyRow PRIVILEGE_MEMBER[] = {
    End("Collection", "Zorbel_Role", "The role."),
    End("Member", "Zorbel_Privilege", "A privilege that the role gives."),
};
constexpr PropertyRow IDENTITY_MEMBER[] = {
    End("Collection", "Zorbel_Role", "The role."),
    End("Member", "Zorbel_Identity", "A user or group that holds the role."),
};

enum Kind { ABSTRACT, CONCRETE, ABSTRACT_ASSOCIATION, ASSOCIATION };

template <std::size_t count>
constexpr ClassRow Class(const char* name, const char* parent, Kind kind,
                         const PropertyRow (&properties)[count], const PropertyRow* key,
                         const char* description) {
  return {name,
          parent,
          kind == ABSTRACT || kind == ABSTRACT_ASSOCIATION,
          kind == ASSOCIATION || kind == ABSTRACT_ASSOCIATION,
          properties,
          count,
          key,
          description};
}

constexpr ClassRow CLASSES[] = {
    Class("CIM_ManagedElement", nullptr, ABSTRACT, MANAGED_ELEMENT, nullptr,
          "Anything that is managed."),
    {"Zorbel_Collection", "CIM_ManagedElement", true, false, nullptr, 0, nullptr, "A named set."},
    Class("Zorbel_Role", "Zorbel_Collection", CONCRETE, ROLE, &ROLE[1],
          "A named collection of privileges that identities hold."),
    Class("Zorbel_Privilege", "CIM_ManagedElement", CONCRETE, PRIVILEGE, &PRIVILEGE[1],
          "A right that a role can give."),
    Class("Zorbel_Identity", "CIM_ManagedElement", CONCRETE, IDENTITY, &IDENTITY[1],
          "A user or a group that is known to the daemon."),
    Class("CIM_System", "CIM_ManagedElement", ABSTRACT, SYSTEM, &SYSTEM[1], "A system."),
    Class("CIM_ComputerSystem", "CIM_System", ABSTRACT, COMPUTER_SYSTEM, &SYSTEM[1], "A computer."),
    Class("ZORBEL_VMComputerSystem", "CIM_ComputerSystem", CONCRETE, MACHINE, &SYSTEM[1],
          "A virtual machine."),
    Class("ZORBEL_ORXComputerSystem", "CIM_ComputerSystem", CONCRETE, HOST, &SYSTEM[1],
          "A virtualization host."),
    Class("CIM_HostedDependency", nullptr, ABSTRACT_ASSOCIATION, DEPENDENCY, nullptr,
          "One element hosts another."),
    Class("ZORBEL_HostedDependency", "CIM_HostedDependency", ASSOCIATION, HOSTED_DEPENDENCY,
          nullptr, "A host and a machine that runs on it."),
    Class("CIM_MemberOfCollection", nullptr, ABSTRACT_ASSOCIATION, MEMBER, nullptr,
          "A collection and a member of it."),
    Class("Zorbel_PrivilegeMemberOfCollection", "CIM_MemberOfCollection", ASSOCIATION,
          PRIVILEGE_MEMBER, nullptr, "A role and a privilege that it gives."),
    Class("Zorbel_IdentityMemberOfCollection", "CIM_MemberOfCollection", ASSOCIATION,
          IDENTITY_MEMBER, nullptr, "A role and an identity that holds it."),
};

const ClassRow* ParentOf(const ClassRow& type) {
  return type.parent ? FindClass(type.parent) : nullptr;
}

void AddOwn(const ClassRow& type, const PropertyRow& row, std::vector<ClassProperty>& all) {
  for (ClassProperty& inherited : all) {
    if (!SameName(inherited.row->name, row.name)) continue;
    inherited.row = &row;
    inherited.isOwn = true;
    return;
  }
  all.push_back({&row, &type, true});
}

}  // namespace

std::vector<const ClassRow*> AllClasses() {
  std::vector<const ClassRow*> all;
  for (const ClassRow& type : CLASSES) all.push_back(&type);
  return all;
}

const ClassRow* FindClass(std::string_view name) {
  for (const ClassRow& type : CLASSES) {
    if (SameName(type.name, name)) return &type;
  }
  return nullptr;
}

bool DerivesFrom(const ClassRow& type, const ClassRow& ancestor) {
  const ClassRow* at = &type;
  while (at && at != &ancestor) at = ParentOf(*at);
  return at != nullptr;
}

std::vector<const ClassRow*> ConcreteClasses(const ClassRow& type) {
  std::vector<const ClassRow*> found;
  for (const ClassRow& candidate : CLASSES) {
    if (!candidate.isAbstract && DerivesFrom(candidate, type)) found.push_back(&candidate);
  }
  return found;
}

std::vector<ClassProperty> PropertiesOf(const ClassRow& type) {
  std::vector<ClassProperty> all;
  if (const ClassRow* parent = ParentOf(type)) all = PropertiesOf(*parent);
  for (ClassProperty& inherited : all) inherited.isOwn = false;
  for (std::size_t i = 0; i < type.propertyCount; ++i) AddOwn(type, type.properties[i], all);
  return all;
}

const ClassRow& OriginOf(const ClassRow& assocClass) {
  return *FindClass(assocClass.properties[0].reference);
}

const ClassRow& ResultOf(const ClassRow& assocClass) {
  return *FindClass(assocClass.properties[1].reference);
}

bool SameName(std::string_view a, std::string_view b) {
  return a.size() == b.size() && strncasecmp(a.data(), b.data(), a.size()) == 0;
}

const char* TypeName(CimType type) {
  return type == CimType::UInt16 ? "uint16" : "string";
}

}  // namespace tools
