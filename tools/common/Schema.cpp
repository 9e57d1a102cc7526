// SPDX-License-Identifier: MIT
#include "tools/common/Schema.h"

#include <strings.h>

#include <algorithm>
#include <iterator>
#include <type_traits>

namespace tools {
namespace {

using namespace kecpp;

constexpr const char* const HOST_CLASS = "ZORBEL_ORXComputerSystem";
constexpr const char* const MACHINE_CLASS = "ZORBEL_VMComputerSystem";
constexpr const char* const ROLE_CLASS = "Zorbel_Role";
constexpr const char* const PRIVILEGE_CLASS = "Zorbel_Privilege";
constexpr const char* const IDENTITY_CLASS = "Zorbel_Identity";

// A text of an object whose class is known from the row that it is read by.
template <class View, std::string_view View::*text>
bool Field(const ObjectView& object, std::string& out) {
  out += std::get<const View*>(object)->*text;
  return true;
}

// Keys of other objects.
template <class View, std::vector<std::string_view> View::*keys>
bool Keys(const ObjectView& object, std::string& out) {
  for (const std::string_view key : std::get<const View*>(object)->*keys) (out += key) += '\0';
  return true;
}

bool HostKey(const ObjectView& object, std::string& out) {
  const auto& host = std::get<const MachineView*>(object)->host;
  if (host) (out += *host) += '\0';
  return true;
}

template <class View>
constexpr bool IS_IDENTITY = std::is_same_v<View, IdentityView>;

bool SystemKey(const ObjectView& object, std::string& out) {
  std::visit([&](const auto* view) { out += view->key; }, object);
  return true;
}

// Identities are no managed elements in the library.
bool Name(const ObjectView& object, std::string& out) {
  return std::visit(
      [&](const auto* view) {
        using View = std::remove_const_t<std::remove_pointer_t<decltype(view)>>;
        if constexpr (!IS_IDENTITY<View>) out += view->name;
        return !IS_IDENTITY<View>;
      },
      object);
}

// The library fills these of some kinds only; they are empty elsewhere.
bool Caption(const ObjectView& object, std::string& out) {
  if (const auto* role = std::get_if<const RoleView*>(&object)) out += (*role)->caption;
  return !std::holds_alternative<const IdentityView*>(object);
}

bool Description(const ObjectView& object, std::string& out) {
  std::visit(
      [&](const auto* view) {
        using View = std::remove_const_t<std::remove_pointer_t<decltype(view)>>;
        if constexpr (!IS_IDENTITY<View> && !std::is_same_v<View, PrivilegeView>)
          out += view->description;
      },
      object);
  return !std::holds_alternative<const IdentityView*>(object);
}

bool ClassName(const ObjectView& object, std::string& out) {
  constexpr const char* NAMES[] = {HOST_CLASS, MACHINE_CLASS, ROLE_CLASS, PRIVILEGE_CLASS,
                                   IDENTITY_CLASS};
  out += NAMES[object.index()];
  return true;
}

// A list of one.
bool Status(const ObjectView& object, std::string& out) {
  const auto* host = std::get_if<const HostView*>(&object);
  out += std::to_string(host ? (*host)->operationalStatus
                             : std::get<const MachineView*>(object)->operationalStatus);
  out += '\0';
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
    Text("Caption", Caption, "A short label."),
    Text("Description", Description, "Free text."),
    Text("ElementName", Name, "The display name."),
};
constexpr PropertyRow SYSTEM[] = {
    CREATION_CLASS,
    Key("Name", SystemKey, "The daemon's identifier of the object."),
};
constexpr PropertyRow COMPUTER_SYSTEM[] = {
    {"OperationalStatus", CimType::UInt16, true, false, Status, nullptr,
     "0 unknown, 2 OK, 3 degraded, 6 error, 10 stopped, 15 dormant."},
};
constexpr PropertyRow HOST[] = {
    Text("UUID", Field<HostView, &HostView::uuid>, "The hardware's UUID."),
    Text("Vendor", Field<HostView, &HostView::vendor>, "The hardware's maker."),
    Text("Model", Field<HostView, &HostView::model>, "The hardware's model."),
};
constexpr PropertyRow MACHINE[] = {
    Text("UUID", Field<MachineView, &MachineView::uuid>, "The machine's UUID."),
    Text("GuestFullName", Field<MachineView, &MachineView::guestFullName>, "The guest's system."),
    Text("GuestHostName", Field<MachineView, &MachineView::guestHostName>,
         "The guest's host name."),
    Text("GuestIPAddress", Field<MachineView, &MachineView::guestIPAddress>,
         "The guest's address."),
    Text("VMPathName", Field<MachineView, &MachineView::path>, "The machine's file."),
    Text("PowerState", Field<MachineView, &MachineView::powerStateText>,
         "poweredOn, poweredOff or suspended, as the daemon says it."),
};
constexpr PropertyRow ROLE[] = {
    CREATION_CLASS,
    Key("Name", Field<RoleView, &RoleView::key>, "The daemon's identifier of the role."),
    Text("RoleType", Field<RoleView, &RoleView::type>, "SystemDefined or UserDefined."),
};
constexpr PropertyRow PRIVILEGE[] = {
    CREATION_CLASS,
    Key("InstanceID", Field<PrivilegeView, &PrivilegeView::key>,
        "The daemon's identifier of the privilege."),
};
constexpr PropertyRow IDENTITY[] = {
    CREATION_CLASS,
    Key("InstanceID", Field<IdentityView, &IdentityView::key>, "The name of the user or group."),
};
constexpr PropertyRow DEPENDENCY[] = {
    End("Antecedent", "CIM_ManagedElement", "What the other end depends on."),
    End("Dependent", "CIM_ManagedElement", "What depends on the other end."),
};
constexpr PropertyRow HOSTED_DEPENDENCY[] = {
    End("Antecedent", HOST_CLASS, "The host."),
    End("Dependent", MACHINE_CLASS, "The machine that runs on it."),
};
constexpr PropertyRow MEMBER[] = {
    End("Collection", "Zorbel_Collection", "The collection."),
    End("Member", "CIM_ManagedElement", "A member of it."),
};
constexpr PropertyRow PRIVILEGE_MEMBER[] = {
    End("Collection", ROLE_CLASS, "The role."),
    End("Member", PRIVILEGE_CLASS, "A privilege that the role gives."),
};
constexpr PropertyRow IDENTITY_MEMBER[] = {
    End("Collection", ROLE_CLASS, "The role."),
    End("Member", IDENTITY_CLASS, "A user or group that holds the role."),
};

template <std::size_t count>
constexpr ClassRow Abstract(const char* name, const char* parent,
                            const PropertyRow (&properties)[count], const PropertyRow* key,
                            const char* description) {
  return {name, parent, true, false, properties, count, key, description, {}, nullptr, nullptr};
}

template <std::size_t count>
constexpr ClassRow Objects(Kind kind, const char* name, const char* parent,
                           const PropertyRow (&properties)[count], const PropertyRow* key,
                           const char* description) {
  return {name, parent, false, false, properties, count, key, description, kind, nullptr, nullptr};
}

// Without readers it is abstract.
template <std::size_t count>
constexpr ClassRow Association(const char* name, const char* parent,
                               const PropertyRow (&properties)[count], const char* description,
                               ReadValue results = nullptr, ReadValue origins = nullptr) {
  return {name,    parent, results == nullptr, true, properties, count, nullptr, description, {},
          results, origins};
}

// Not constexpr: under GCC's undefined-behaviour sanitizer a function's address is no constant.
const ClassRow CLASSES[] = {
    Abstract("CIM_ManagedElement", nullptr, MANAGED_ELEMENT, nullptr, "Anything that is managed."),
    {"Zorbel_Collection",
     "CIM_ManagedElement",
     true,
     false,
     nullptr,
     0,
     nullptr,
     "A named set.",
     {},
     nullptr,
     nullptr},
    Objects(Kind::role, ROLE_CLASS, "Zorbel_Collection", ROLE, &ROLE[1],
            "A named collection of privileges that identities hold."),
    Objects(Kind::privilege, PRIVILEGE_CLASS, "CIM_ManagedElement", PRIVILEGE, &PRIVILEGE[1],
            "A right that a role can give."),
    Objects(Kind::identity, IDENTITY_CLASS, "CIM_ManagedElement", IDENTITY, &IDENTITY[1],
            "A user or a group that is known to the daemon."),
    Abstract("CIM_System", "CIM_ManagedElement", SYSTEM, &SYSTEM[1], "A system."),
    Abstract("CIM_ComputerSystem", "CIM_System", COMPUTER_SYSTEM, &SYSTEM[1], "A computer."),
    Objects(Kind::machine, MACHINE_CLASS, "CIM_ComputerSystem", MACHINE, &SYSTEM[1],
            "A virtual machine."),
    Objects(Kind::host, HOST_CLASS, "CIM_ComputerSystem", HOST, &SYSTEM[1],
            "A virtualization host."),
    Association("CIM_HostedDependency", nullptr, DEPENDENCY, "One element hosts another."),
    Association("ZORBEL_HostedDependency", "CIM_HostedDependency", HOSTED_DEPENDENCY,
                "A host and a machine that runs on it.", Keys<HostView, &HostView::machines>,
                HostKey),
    Association("CIM_MemberOfCollection", nullptr, MEMBER, "A collection and a member of it."),
    Association("Zorbel_PrivilegeMemberOfCollection", "CIM_MemberOfCollection", PRIVILEGE_MEMBER,
                "A role and a privilege that it gives.", Keys<RoleView, &RoleView::privileges>,
                Keys<PrivilegeView, &PrivilegeView::roles>),
    Association("Zorbel_IdentityMemberOfCollection", "CIM_MemberOfCollection", IDENTITY_MEMBER,
                "A role and an identity that holds it.", Keys<RoleView, &RoleView::identities>,
                Keys<IdentityView, &IdentityView::roles>),
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

const ClassRow& ClassOf(kecpp::Kind kind) {
  return *std::find_if(std::begin(CLASSES), std::end(CLASSES),
                       [kind](const ClassRow& type) { return type.kind == kind; });
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
