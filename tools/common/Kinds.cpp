// SPDX-License-Identifier: MIT
#include "tools/common/Kinds.h"

#include <algorithm>
#include <string>

#include "tools/common/Split.h"

namespace tools {
namespace {

using Form = Column::Form;

// The links of an association, seen from one of its ends.
PropertyRow Many(const char* name, ReadValue read) {
  return {name, CimType::String, true, false, read, nullptr, nullptr};
}

const ClassRow& Hosted() {
  return *FindClass("ZORBEL_HostedDependency");
}
const ClassRow& Gives() {
  return *FindClass("Zorbel_PrivilegeMemberOfCollection");
}
const ClassRow& Holds() {
  return *FindClass("Zorbel_IdentityMemberOfCollection");
}

bool HostKey(const ObjectView& object, std::string& out) {
  const auto& host = std::get<const kecpp::MachineView*>(object)->host;
  if (host) out += *host;
  return host.has_value();
}

std::vector<Kind> MakeKinds() {
  return {
      {kecpp::Kind::host,
       "hosts",
       "Hosts",
       Group::systems,
       "Name ElementName Description UUID Vendor Model OperationalStatus",
       {Many("machines", Hosted().results)},
       {{"NAME", "ElementName"},
        {"KEY", "Name"},
        {"STATUS", "OperationalStatus", Form::status},
        {"VENDOR", "Vendor"},
        {"MODEL", "Model"},
        {"MACHINES", "machines", Form::count}}},
      {kecpp::Kind::machine,
       "machines",
       "Machines",
       Group::systems,
       "Name ElementName Description UUID GuestFullName GuestHostName GuestIPAddress VMPathName "
       "PowerState OperationalStatus",
       {{"host", CimType::String, false, false, HostKey, nullptr, nullptr}},
       {{"NAME", "ElementName"},
        {"KEY", "Name"},
        {"HOST", "host", Form::hostName},
        {"POWER", "PowerState"},
        {"STATUS", "OperationalStatus", Form::status},
        {"GUEST", "GuestFullName"},
        {"ADDRESS", "GuestIPAddress"}}},
      {kecpp::Kind::privilege,
       "privileges",
       "Privileges",
       Group::authorization,
       "InstanceID ElementName",
       {Many("roles", Gives().origins)},
       {{"KEY", "InstanceID"}, {"NAME", "ElementName"}, {"ROLES", "roles", Form::items}}},
      {kecpp::Kind::role,
       "roles",
       "Roles",
       Group::authorization,
       "Name ElementName Caption Description RoleType",
       {Many("privileges", Gives().results), Many("identities", Holds().results)},
       {{"KEY", "Name"},
        {"NAME", "ElementName"},
        {"LABEL", "Caption"},
        {"TYPE", "RoleType"},
        {"PRIVILEGES", "privileges", Form::count},
        {"IDENTITIES", "identities", Form::items}}},
      {kecpp::Kind::identity,
       "identities",
       "Identities",
       Group::authorization,
       "InstanceID",
       {Many("roles", Holds().origins)},
       {{"KEY", "InstanceID"}, {"ROLES", "roles", Form::items}}},
  };
}

std::vector<ClassProperty> MakeValues(const Kind& kind) {
  const ClassRow& type = ClassOf(kind.kind);
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

const Kind& KindRow(kecpp::Kind kind) {
  return *std::find_if(Kinds().begin(), Kinds().end(),
                       [kind](const Kind& row) { return row.kind == kind; });
}

Group GroupOf(const ClassRow& type) {
  const ClassRow& end = type.isAssociation ? OriginOf(type) : type;
  return end.kind ? KindRow(*end.kind).group : Group::systems;
}

// Never freed, as above.
const std::vector<ClassProperty>& ValuesOf(const Kind& kind) {
  static const auto& values = *[] {
    auto* made = new std::vector<std::vector<ClassProperty>>;
    for (const Kind& row : Kinds()) made->push_back(MakeValues(row));
    return made;
  }();
  return values[static_cast<std::size_t>(&kind - Kinds().data())];
}

}  // namespace tools
