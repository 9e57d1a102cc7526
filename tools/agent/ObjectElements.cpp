// SPDX-License-Identifier: MIT
#include "tools/agent/ObjectElements.h"

#include "tools/agent/PathElements.h"

namespace tools::agent {
namespace {

void WriteKey(XmlWriter& out, const char* name, std::string_view storedValue) {
  out.Open("KEYBINDING", {{"NAME", name}});
  out.Open("KEYVALUE", {{"VALUETYPE", "string"}, {"TYPE", "string"}});
  out.StoredText(storedValue);
  out.Close("KEYVALUE");
  out.Close("KEYBINDING");
}

void WriteValue(XmlWriter& out, std::string_view stored) {
  out.Open("VALUE");
  out.StoredText(stored);
  out.Close("VALUE");
}

}  // namespace

ObjectElements::ObjectElements(XmlWriter& writer, const std::string& hostName, bool withOrigins)
    : out(writer), host(hostName), origins(withOrigins) {}

void ObjectElements::NameOf(const ClassRow& type, std::string_view key) {
  out.Open("INSTANCENAME", {{"CLASSNAME", type.name}});
  WriteKey(out, CREATION_CLASS_NAME, type.name);
  WriteKey(out, type.key->name, key);
  out.Close("INSTANCENAME");
}

void ObjectElements::Name(const Rows& rows, std::size_t row) {
  NameOf(rows.Type(), rows.Key(row));
}

void ObjectElements::Instance(const Rows& rows, std::size_t row) {
  out.Open("INSTANCE", {{"CLASSNAME", rows.Type().name}});
  for (std::size_t column = 0; column < rows.Columns().size(); ++column) {
    Property(rows.Columns()[column], rows.Value(row, column));
  }
  out.Close("INSTANCE");
}

void ObjectElements::Path(const Rows& rows, std::size_t row) {
  OpenPath();
  Name(rows, row);
  ClosePath();
}

void ObjectElements::Name(const Link& link) {
  out.Open("INSTANCENAME", {{"CLASSNAME", link.type->name}});
  for (const ClassProperty& role : PropertiesOf(*link.type)) {
    out.Open("KEYBINDING", {{"NAME", role.row->name}});
    End(link, *role.row);
    out.Close("KEYBINDING");
  }
  out.Close("INSTANCENAME");
}

void ObjectElements::Instance(const Link& link, const std::vector<ClassProperty>& properties) {
  out.Open("INSTANCE", {{"CLASSNAME", link.type->name}});
  for (const ClassProperty& role : properties) {
    OpenProperty("PROPERTY.REFERENCE", role);
    End(link, *role.row);
    out.Close("PROPERTY.REFERENCE");
  }
  out.Close("INSTANCE");
}

void ObjectElements::Path(const Link& link) {
  OpenPath();
  Name(link);
  ClosePath();
}

void ObjectElements::OpenPath() {
  out.Open("INSTANCEPATH");
  WriteNamespacePath(out, host, NAMESPACE_NAME);
}

void ObjectElements::ClosePath() {
  out.Close("INSTANCEPATH");
}

void ObjectElements::OpenProperty(const char* element, const ClassProperty& property) {
  const bool isReference = property.row->type == CimType::Reference;
  const char* kind = isReference ? "REFERENCECLASS" : "TYPE";
  const char* type = isReference ? property.row->reference : TypeName(property.row->type);
  if (origins) {
    out.Open(element, {{"NAME", property.row->name},
                       {kind, type},
                       {"CLASSORIGIN", property.origin->name},
                       {"PROPAGATED", property.isOwn ? "false" : "true"}});
  } else {
    out.Open(element, {{"NAME", property.row->name}, {kind, type}});
  }
}

// A property without a value has no VALUE: that is null, and not the empty text.
void ObjectElements::Property(const ClassProperty& property,
                              std::optional<std::string_view> value) {
  const bool isArray = property.row->isArray;
  const char* element = isArray ? "PROPERTY.ARRAY" : "PROPERTY";
  OpenProperty(element, property);
  if (isArray && value) {
    out.Open("VALUE.ARRAY");
    for (const std::string_view item : Items(*value)) WriteValue(out, item);
    out.Close("VALUE.ARRAY");
  } else if (value) {
    WriteValue(out, *value);
  }
  out.Close(element);
}

// Without a host: clients compare references, and the same object may be reached by many names.
void ObjectElements::End(const Link& link, const PropertyRow& role) {
  const bool isOrigin = &role == &link.type->properties[0];
  out.Open("VALUE.REFERENCE");
  out.Open("LOCALINSTANCEPATH");
  WriteLocalNamespace(out, NAMESPACE_NAME);
  if (isOrigin) {
    NameOf(OriginOf(*link.type), link.originKey);
  } else {
    NameOf(ResultOf(*link.type), link.resultKey);
  }
  out.Close("LOCALINSTANCEPATH");
  out.Close("VALUE.REFERENCE");
}

}  // namespace tools::agent
