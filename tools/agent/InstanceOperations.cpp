// SPDX-License-Identifier: MIT
#include "tools/agent/InstanceOperations.h"

#include <algorithm>
#include <utility>

#include "tools/agent/Errors.h"
#include "tools/agent/ObjectElements.h"

namespace tools::agent {
namespace {

// What a class and those below it hold.
struct Found {
  std::vector<Rows> objects;
  std::vector<std::vector<Link>> links;  // by class
};

Found ReadInstances(const Call& call, const ClassRow& asked, bool withProperties) {
  const auto types = ConcreteClasses(asked);
  Found found;
  for (const ClassRow* type : types) {
    if (type->isAssociation) continue;
    found.objects.emplace_back(*type, withProperties
                                          ? InstanceProperties(call.request, asked, *type)
                                          : std::vector<ClassProperty>());
  }
  ReadInventory(call, types, [&](const kecpp::Inventory& inventory) {
    for (Rows& rows : found.objects) ReadAll(inventory, rows);
    for (const ClassRow* type : types) {
      if (type->isAssociation) found.links.push_back(ReadAllLinks(inventory, *type));
    }
  });
  return found;
}

ObjectElements Elements(const Call& call, XmlWriter& out) {
  return {out, call.host, call.request.Flag("IncludeClassOrigin", false)};
}

void WriteInstances(const Call& call, const ClassRow& asked, const Found& found, XmlWriter& out) {
  ObjectElements elements = Elements(call, out);
  for (const Rows& rows : found.objects) {
    for (std::size_t row = 0; row < rows.Count(); ++row) {
      out.Open("VALUE.NAMEDINSTANCE");
      elements.Name(rows, row);
      elements.Instance(rows, row);
      out.Close("VALUE.NAMEDINSTANCE");
    }
  }
  for (const std::vector<Link>& links : found.links) {
    if (links.empty()) continue;
    const auto columns = InstanceProperties(call.request, asked, *links.front().type);
    for (const Link& link : links) {
      out.Open("VALUE.NAMEDINSTANCE");
      elements.Name(link);
      elements.Instance(link, columns);
      out.Close("VALUE.NAMEDINSTANCE");
    }
  }
}

void WriteNames(const Call& call, const Found& found, XmlWriter& out) {
  ObjectElements elements = Elements(call, out);
  for (const Rows& rows : found.objects) {
    for (std::size_t row = 0; row < rows.Count(); ++row) elements.Name(rows, row);
  }
  for (const std::vector<Link>& links : found.links) {
    for (const Link& link : links) elements.Name(link);
  }
}

// `types` are those that the object's name can mean, its own among them.
Rows ReadObject(const Call& call, const std::vector<const ClassRow*>& types,
                const ObjectName& object) {
  Rows rows(*object.type, WantedProperties(call.request, *object.type));
  ReadInventory(call, types,
                [&](const kecpp::Inventory& inventory) { ReadOne(inventory, object.key, rows); });
  return rows;
}

Content GetLink(const Call& call) {
  const Link link = NamedLink(call, "InstanceName");
  return [call, link, columns = WantedProperties(call.request, *link.type)](XmlWriter& out) {
    Elements(call, out).Instance(link, columns);
  };
}

}  // namespace

Content EnumerateInstances(const Call& call) {
  const ClassRow& asked = RequestedClass(call.request);
  return [call, &asked, found = ReadInstances(call, asked, true)](XmlWriter& out) {
    WriteInstances(call, asked, found, out);
  };
}

Content EnumerateInstanceNames(const Call& call) {
  return [call, found = ReadInstances(call, RequestedClass(call.request), false)](XmlWriter& out) {
    WriteNames(call, found, out);
  };
}

Content GetInstance(const Call& call) {
  if (NamesLink(call.request, "InstanceName")) return GetLink(call);
  const auto objects = NamedObjects(call.request, "InstanceName");
  const auto types = TypesOf(objects);
  for (const ObjectName& object : objects) {
    Rows rows = ReadObject(call, types, object);
    if (rows.Count() == 0) continue;
    return
        [call, rows = std::move(rows)](XmlWriter& out) { Elements(call, out).Instance(rows, 0); };
  }
  throw OperationError(Status::NotFound, "there is no such instance");
}

}  // namespace tools::agent
