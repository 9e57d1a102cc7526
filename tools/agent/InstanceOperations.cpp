// SPDX-License-Identifier: MIT
#include "tools/agent/InstanceOperations.h"

#include <iterator>
#include <map>
#include <memory>
#include <utility>

#include "tools/agent/Errors.h"
#include "tools/agent/ObjectElements.h"
#include "tools/agent/Records.h"

namespace tools::agent {
namespace {

ElementStyle Style(const Call& call, Shape shape) {
  return {shape, call.host, call.request.Flag("IncludeClassOrigin", false)};
}

// How an instance of a class is read and written.
struct InstanceForm {
  std::vector<ClassProperty> columns;
  Element element;
};

// Prepared once for each class: with all properties, as most clients ask. Never freed: another
// thread may still read it while the process ends.
const InstanceForm& WholeInstance(const ClassRow& type) {
  static const auto& forms = *[] {
    auto* made = new std::map<const ClassRow*, InstanceForm>;
    for (const ClassRow* each : AllClasses()) {
      if (!each->kind) continue;
      const auto columns = PropertiesOf(*each);
      made->insert({each, {columns, ObjectElement({Shape::Instance, "", false}, *each, columns)}});
    }
    return made;
  }();
  return forms.at(&type);
}

std::shared_ptr<const InstanceForm> FormOf(const Call& call, const ClassRow& type) {
  const ElementStyle style = Style(call, Shape::Instance);
  if (!style.origins && !call.request.List("PropertyList")) {
    return {std::shared_ptr<void>(), &WholeInstance(type)};
  }
  const auto columns = WantedProperties(call.request, type);
  return std::make_shared<InstanceForm>(InstanceForm{columns, ObjectElement(style, type, columns)});
}

Content GetLink(const Call& call) {
  const Link link = NamedLink(call, "InstanceName");
  Rows row(2);
  row.Put(link.originKey);
  row.Put(link.resultKey);
  const auto columns = WantedProperties(call.request, *link.type);
  return [row = std::move(row),
          element = LinkElement(Style(call, Shape::Instance), *link.type, columns)](
             XmlWriter& out) { element.Write(row, 0, out); };
}

}  // namespace

Content SelectInstances(const Call& call, Shape shape, const query::Expression* condition) {
  const ClassRow& asked = RequestedClass(call.request);
  if (condition) query::Condition(*condition, asked, "");
  const auto types = ConcreteClasses(asked);
  const auto visit = EnterInventory(call, types);
  Cursors objects, links;
  for (const ClassRow* type : types) {
    std::vector<ClassProperty> columns;
    if (HasInstance(shape)) columns = InstanceProperties(call.request, asked, *type);
    if (!type->isAssociation) {
      objects.push_back(ObjectsOf(*type, columns, ObjectElement(Style(call, shape), *type, columns),
                                  condition ? WantedObjects(*condition, *type, "") : nullptr));
    } else if (!condition || query::Condition(*condition, *type, "").Holds(LinkRecord())) {
      links.push_back(LinksOf(*type, LinkElement(Style(call, shape), *type, columns)));
    }
  }
  std::move(links.begin(), links.end(), std::back_inserter(objects));
  return {InSequence(std::move(objects)), visit};
}

Content GetInstance(const Call& call) {
  if (NamesLink(call.request, "InstanceName")) return GetLink(call);
  const auto objects = NamedObjects(call.request, "InstanceName");
  const auto types = TypesOf(objects);
  for (const ObjectName& object : objects) {
    const auto visit = EnterInventory(call, types);
    const auto form = FormOf(call, *object.type);
    Rows row(form->columns.size() + 1);
    const bool found = ReadOne(visit.Inventory(), object, form->columns, row);
    visit.Confirm();
    if (!found) continue;
    return [form, row = std::move(row)](XmlWriter& out) { form->element.Write(row, 0, out); };
  }
  throw OperationError(Status::NotFound, "there is no such instance");
}

}  // namespace tools::agent
