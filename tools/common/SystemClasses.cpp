// SPDX-License-Identifier: MIT
#include <iterator>
#include <type_traits>

#include "tools/common/ClassTables.h"
#include "tools/common/ValueMaps.h"

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

// What the daemon does not tell.
bool Unknown(const ObjectView&, std::string&) {
  return false;
}

bool Caption(const ObjectView& object, std::string& out) {
  const auto* role = std::get_if<const RoleView*>(&object);
  if (role) out += (*role)->caption;
  return role != nullptr;
}

// The library fills it of some kinds only; it is empty elsewhere.
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

const HostView* AsHost(const ObjectView& object) {
  const auto* host = std::get_if<const HostView*>(&object);
  return host ? *host : nullptr;
}

const MachineView& AsMachine(const ObjectView& object) {
  return *std::get<const MachineView*>(object);
}

void AddItem(std::string& out, std::string_view item) {
  (out += item) += '\0';
}

// The following are of hosts and machines. Lists have one item.
unsigned StatusOf(const ObjectView& object) {
  const HostView* host = AsHost(object);
  return host ? host->operationalStatus : AsMachine(object).operationalStatus;
}

bool Status(const ObjectView& object, std::string& out) {
  AddItem(out, std::to_string(StatusOf(object)));
  return true;
}

bool StatusText(const ObjectView& object, std::string& out) {
  if (AsHost(object)) return false;
  AddItem(out, AsMachine(object).powerStateText);
  return true;
}

// A machine's status is its power state, which says nothing of its health.
bool Health(const ObjectView& object, std::string& out) {
  if (!AsHost(object)) return false;
  switch (StatusOf(object)) {
    case 2:
      out += '5';
      return true;
    case 3:
      out += "10";
      return true;
    case 6:
      out += "20";
      return true;
    default:
      out += '0';
      return true;
  }
}

bool EnabledState(const ObjectView& object, std::string& out) {
  if (AsHost(object)) {
    out += '5';
    return true;
  }
  switch (AsMachine(object).powerState) {
    case PowerState::on:
      out += '2';
      return true;
    case PowerState::off:
      out += '3';
      return true;
    case PowerState::suspended:
      out += '6';
      return true;
    default:
      out += '0';
      return true;
  }
}

// Nothing can be requested.
bool NotApplicable(const ObjectView&, std::string& out) {
  out += "12";
  return true;
}

// The name of a system is an identifier of the daemon's.
bool NameFormat(const ObjectView&, std::string& out) {
  out += "Other";
  return true;
}

std::string_view UuidOf(const ObjectView& object) {
  const HostView* host = AsHost(object);
  return host ? host->uuid : AsMachine(object).uuid;
}

bool OtherIdentifier(const ObjectView& object, std::string& out) {
  const std::string_view uuid = UuidOf(object);
  if (!uuid.empty()) AddItem(out, uuid);
  return !uuid.empty();
}

bool IdentifierKind(const ObjectView& object, std::string& out) {
  const bool hasOne = !UuidOf(object).empty();
  if (hasOne) AddItem(out, "UUID");
  return hasOne;
}

constexpr PropertyRow CREATION_CLASS =
    Key(CREATION_CLASS_NAME, ClassName, "The class that the instance was made of.");

constexpr PropertyRow MANAGED_ELEMENT[] = {
    Text("InstanceID", Unknown, "An identifier that no other instance has."),
    Text("Caption", Caption, "A short label."),
    Text("Description", Description, "Free text."),
    Text("ElementName", Name, "The display name."),
};
constexpr PropertyRow MANAGED_SYSTEM_ELEMENT[] = {
    Text("Name", SystemKey, "The name by which the element is known."),
    Enumerations("OperationalStatus", OPERATIONAL_STATUS, Status, "How the element does."),
    List("StatusDescriptions", CimType::String, StatusText, "What the statuses mean."),
    Enumeration("HealthState", HEALTH_STATE, Health, "The health of the element itself."),
};
constexpr PropertyRow ENABLED_LOGICAL_ELEMENT[] = {
    Enumeration("EnabledState", ENABLED_STATE, EnabledState, "Whether the element is in use."),
    Enumeration("RequestedState", REQUESTED_STATE, NotApplicable, "The state last requested."),
    Enumeration("EnabledDefault", ENABLED_DEFAULT, Unknown, "The state after a start."),
    Enumeration("TransitioningToState", TRANSITION, NotApplicable,
                "The state that the element changes to."),
    Enumerations("AvailableRequestedStates", AVAILABLE_STATES, Unknown,
                 "The states that can be requested."),
};
constexpr PropertyRow SYSTEM[] = {
    CREATION_CLASS,
    Key("Name", SystemKey, "The daemon's identifier of the object."),
    Text("NameFormat", NameFormat, "How the name was made."),
    List("OtherIdentifyingInfo", CimType::String, OtherIdentifier, "Other identifiers."),
    List("IdentifyingDescriptions", CimType::String, IdentifierKind,
         "What each other identifier is."),
};
constexpr PropertyRow COMPUTER_SYSTEM[] = {
    Enumerations("Dedicated", DEDICATED, Unknown, "What the system is for."),
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
    End("Collection", "CIM_Collection", "The collection."),
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

constexpr ClassRow Objects(Kind kind, const char* name, const char* parent, Properties properties,
                           const PropertyRow* key, const char* description) {
  return {name, parent,      false, false,   properties.rows, properties.count,
          key,  description, kind,  nullptr, nullptr};
}

constexpr ClassRow Links(const char* name, const char* parent, Properties properties,
                         const char* description, ReadValue results, ReadValue origins) {
  return {name,    parent,      false, true,    properties.rows, properties.count,
          nullptr, description, {},    results, origins};
}

constexpr ClassRow Aggregation(ClassRow row) {
  row.isAggregation = true;
  return row;
}

// Not constexpr: under GCC's undefined-behaviour sanitizer a function's address is no constant.
const ClassRow CLASSES[] = {
    Class("CIM_ManagedElement", nullptr, MANAGED_ELEMENT, "Anything that is managed.", EVERYWHERE),
    Class("CIM_Collection", "CIM_ManagedElement", {}, "A group of elements.", SYSTEMS),
    Class("Zorbel_Collection", "CIM_Collection", {}, "A named set.", SYSTEMS),
    Objects(Kind::role, ROLE_CLASS, "Zorbel_Collection", ROLE, &ROLE[1],
            "A named collection of privileges that identities hold."),
    Objects(Kind::privilege, PRIVILEGE_CLASS, "CIM_ManagedElement", PRIVILEGE, &PRIVILEGE[1],
            "A right that a role can give."),
    Objects(Kind::identity, IDENTITY_CLASS, "CIM_ManagedElement", IDENTITY, &IDENTITY[1],
            "A user or a group that is known to the daemon."),
    Class("CIM_ManagedSystemElement", "CIM_ManagedElement", MANAGED_SYSTEM_ELEMENT,
          "A system or a part of one.", EVERYWHERE),
    Class("CIM_LogicalElement", "CIM_ManagedSystemElement", {}, "An element that is not hardware.",
          EVERYWHERE),
    Class("CIM_EnabledLogicalElement", "CIM_LogicalElement", ENABLED_LOGICAL_ELEMENT,
          "An element that can be in use or not.", EVERYWHERE),
    Class("CIM_System", "CIM_EnabledLogicalElement", SYSTEM, "A system.", EVERYWHERE),
    Class("CIM_ComputerSystem", "CIM_System", COMPUTER_SYSTEM, "A computer.", EVERYWHERE, false),
    Objects(Kind::machine, MACHINE_CLASS, "CIM_ComputerSystem", MACHINE, &SYSTEM[1],
            "A virtual machine."),
    Objects(Kind::host, HOST_CLASS, "CIM_ComputerSystem", HOST, &SYSTEM[1],
            "A virtualization host."),
    Association("CIM_Dependency", nullptr, DEPENDENCY, "One element depends on another.",
                EVERYWHERE, true),
    Association("CIM_HostedDependency", "CIM_Dependency", {}, "One element hosts another.",
                EVERYWHERE, false),
    Links("ZORBEL_HostedDependency", "CIM_HostedDependency", HOSTED_DEPENDENCY,
          "A host and a machine that runs on it.", Keys<HostView, &HostView::machines>, HostKey),
    Aggregation(Association("CIM_MemberOfCollection", nullptr, MEMBER,
                            "A collection and a member of it.", SYSTEMS, false)),
    Aggregation(Links("Zorbel_PrivilegeMemberOfCollection", "CIM_MemberOfCollection",
                      PRIVILEGE_MEMBER, "A role and a privilege that it gives.",
                      Keys<RoleView, &RoleView::privileges>,
                      Keys<PrivilegeView, &PrivilegeView::roles>)),
    Aggregation(Links("Zorbel_IdentityMemberOfCollection", "CIM_MemberOfCollection",
                      IDENTITY_MEMBER, "A role and an identity that holds it.",
                      Keys<RoleView, &RoleView::identities>,
                      Keys<IdentityView, &IdentityView::roles>)),
};

}  // namespace

ClassTable SystemClasses() {
  return {CLASSES, std::size(CLASSES)};
}

}  // namespace tools
