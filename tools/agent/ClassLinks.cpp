// SPDX-License-Identifier: MIT
#include "tools/agent/ClassLinks.h"

#include <algorithm>
#include <utility>

#include "tools/agent/ClassElements.h"
#include "tools/agent/PathElements.h"

namespace tools::agent {
namespace {

using Classes = std::vector<const ClassRow*>;

// Calls `use` with each association that is or derives from `linkClass`, which may be null, and
// the place among its properties of a reference of that role to the class.
template <class Use>
void ForEachReference(const Request& request, const ClassRow* linkClass, Use use) {
  const std::string name = request.Text("ObjectName");
  const ClassRow& type = KnownClass(request, name, Status::InvalidParameter);
  const std::string role = request.Text("Role");
  for (const ClassRow* link : AllClasses(request.space->space)) {
    if (!link->isAssociation || (linkClass && !DerivesFrom(*link, *linkClass))) continue;
    const auto properties = PropertiesOf(*link);
    for (std::size_t i = 0; i < properties.size(); ++i) {
      const PropertyRow& row = *properties[i].row;
      if (!row.reference || !RolePasses(role, row)) continue;
      if (DerivesFrom(type, *FindClass(row.reference))) use(*link, properties, i);
    }
  }
}

void AddOnce(Classes& found, const ClassRow& type) {
  if (std::find(found.begin(), found.end(), &type) == found.end()) found.push_back(&type);
}

Classes References(const Request& request) {
  Classes found;
  ForEachReference(request, FilterClass(request, "ResultClass"),
                   [&](const ClassRow& link, const auto&, std::size_t) { AddOnce(found, link); });
  return found;
}

Classes Associators(const Request& request) {
  const ClassRow* result = FilterClass(request, "ResultClass");
  const std::string role = request.Text("ResultRole");
  Classes found;
  ForEachReference(request, FilterClass(request, "AssocClass"),
                   [&](const ClassRow&, const auto& properties, std::size_t place) {
                     for (std::size_t i = 0; i < properties.size(); ++i) {
                       const PropertyRow& row = *properties[i].row;
                       if (i == place || !row.reference || !RolePasses(role, row)) continue;
                       const ClassRow& partner = *FindClass(row.reference);
                       if (!result || DerivesFrom(partner, *result)) AddOnce(found, partner);
                     }
                   });
  return found;
}

void WritePath(const Call& call, const ClassRow& type, XmlWriter& out) {
  out.Open("CLASSPATH");
  WriteNamespacePath(out, call.host, call.request.nameSpace);
  out.Empty("CLASSNAME", {{"NAME", type.name}});
  out.Close("CLASSPATH");
}

Content WithPaths(const Call& call, Classes found) {
  const ClassDetail detail{false, call.request.Flag("IncludeQualifiers", false),
                           call.request.Flag("IncludeClassOrigin", false)};
  return [call, detail, found = std::move(found)](XmlWriter& out) {
    for (const ClassRow* type : found) {
      out.Open("VALUE.OBJECTWITHPATH");
      WritePath(call, *type, out);
      WriteClass(out, *type, WantedProperties(call.request, *type), detail);
      out.Close("VALUE.OBJECTWITHPATH");
    }
  };
}

Content Paths(const Call& call, Classes found) {
  return [call, found = std::move(found)](XmlWriter& out) {
    for (const ClassRow* type : found) {
      out.Open("OBJECTPATH");
      WritePath(call, *type, out);
      out.Close("OBJECTPATH");
    }
  };
}

}  // namespace

Content ClassReferences(const Call& call) {
  return WithPaths(call, References(call.request));
}

Content ClassReferenceNames(const Call& call) {
  return Paths(call, References(call.request));
}

Content ClassAssociators(const Call& call) {
  return WithPaths(call, Associators(call.request));
}

Content ClassAssociatorNames(const Call& call) {
  return Paths(call, Associators(call.request));
}

}  // namespace tools::agent
