// SPDX-License-Identifier: MIT
#include "tools/agent/StoredElements.h"

#include <algorithm>

#include "tools/agent/PathElements.h"
#include "tools/agent/PropertyElements.h"

namespace tools::agent {
namespace {

bool Contains(const std::vector<ClassProperty>& wanted, const ClassProperty& property) {
  return std::any_of(wanted.begin(), wanted.end(),
                     [&](const ClassProperty& candidate) { return candidate.row == property.row; });
}

void WriteValue(XmlWriter& out, const std::string& text) {
  out.Open("VALUE");
  out.Text(text);
  out.Close("VALUE");
}

}  // namespace

StoredElements::StoredElements(XmlWriter& writer, const std::string& hostName,
                               const std::string& spaceName, bool withOrigins)
    : out(writer), host(hostName), nameSpace(spaceName), origins(withOrigins) {}

void StoredElements::Name(const StoredInstance& instance) {
  out.Open("INSTANCENAME", {{"CLASSNAME", instance.Type().name}});
  for (std::size_t i = 0; i < instance.Properties().size(); ++i) {
    const PropertyRow& row = *instance.Properties()[i].row;
    const auto& value = instance.Value(i);
    if (!row.isKey || !value) continue;
    if (!value->target) {
      WriteTextKey(out, row.name, value->items.front());
      continue;
    }
    out.Open("KEYBINDING", {{"NAME", row.name}});
    Reference(*value->target);
    out.Close("KEYBINDING");
  }
  out.Close("INSTANCENAME");
}

void StoredElements::Path(const StoredInstance& instance) {
  out.Open("INSTANCEPATH");
  WriteNamespacePath(out, host, nameSpace);
  Name(instance);
  out.Close("INSTANCEPATH");
}

void StoredElements::Instance(const StoredInstance& instance,
                              const std::vector<ClassProperty>& wanted) {
  out.Open("INSTANCE", {{"CLASSNAME", instance.Type().name}});
  for (std::size_t i = 0; i < instance.Properties().size(); ++i) {
    const ClassProperty& property = instance.Properties()[i];
    if (Contains(wanted, property)) Property(property, instance.Value(i));
  }
  out.Close("INSTANCE");
}

void StoredElements::Property(const ClassProperty& property,
                              const std::optional<StoredValue>& value) {
  const PropertyRow& row = *property.row;
  OpenProperty(out, property, origins);
  if (value && value->target) Reference(*value->target);
  if (value && row.isArray) out.Open("VALUE.ARRAY");
  if (value) {
    for (const std::string& item : value->items) WriteValue(out, item);
  }
  if (value && row.isArray) out.Close("VALUE.ARRAY");
  out.Close(PropertyElement(row).name);
}

// Without a host: clients compare references, and the same object may be reached by many names.
void StoredElements::Reference(const StoredInstance& target) {
  out.Open("VALUE.REFERENCE");
  out.Open("LOCALINSTANCEPATH");
  WriteLocalNamespace(out, nameSpace);
  Name(target);
  out.Close("LOCALINSTANCEPATH");
  out.Close("VALUE.REFERENCE");
}

}  // namespace tools::agent
