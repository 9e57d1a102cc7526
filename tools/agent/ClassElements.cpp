// SPDX-License-Identifier: MIT
#include "tools/agent/ClassElements.h"

#include "tools/agent/PropertyElements.h"
#include "tools/agent/Qualifiers.h"

namespace tools::agent {
namespace {

void WriteQualifier(XmlWriter& out, const char* name, std::string_view value) {
  OpenQualifier(out, name);
  out.Open("VALUE");
  out.Text(value);
  out.Close("VALUE");
  out.Close("QUALIFIER");
}

void WriteList(XmlWriter& out, const char* name, const NamedValue* values,
               const char* NamedValue::*part) {
  OpenQualifier(out, name);
  out.Open("VALUE.ARRAY");
  for (; values->name; ++values) {
    out.Open("VALUE");
    out.Text(values->*part);
    out.Close("VALUE");
  }
  out.Close("VALUE.ARRAY");
  out.Close("QUALIFIER");
}

// The agent's own classes change with the agent.
const char* VersionOf(const ClassRow& type) {
  return std::string_view(type.name).substr(0, 4) == "CIM_" ? "2.49.0" : KECPP_TOOLS_VERSION;
}

// A reference is the aggregate of an aggregation when it is the origin's.
bool IsAggregate(const ClassRow& type, const PropertyRow& row) {
  return type.isAggregation && SameName(row.name, PropertiesOf(type)[0].row->name);
}

bool Overrides(const ClassRow& type, const ClassProperty& property) {
  return property.isOwn && property.origin != &type;
}

void WriteQualifiers(XmlWriter& out, const ClassRow& type, const ClassProperty& property) {
  const PropertyRow& row = *property.row;
  if (row.isKey) WriteQualifier(out, "Key", "TRUE");
  if (IsAggregate(type, row)) WriteQualifier(out, "Aggregate", "TRUE");
  if (Overrides(type, property)) WriteQualifier(out, "Override", row.name);
  if (row.isRequired) WriteQualifier(out, "Required", "TRUE");
  if (row.isEmbedded) WriteQualifier(out, "EmbeddedObject", "TRUE");
  // The standard declares these two for properties only.
  if (row.type != CimType::Reference) WriteQualifier(out, "Read", "TRUE");
  if (row.isWritable) WriteQualifier(out, "Write", "TRUE");
  WriteQualifier(out, "Description", row.description);
  if (row.values) {
    WriteList(out, "ValueMap", row.values, &NamedValue::value);
    WriteList(out, "Values", row.values, &NamedValue::name);
  }
}

void WriteProperty(XmlWriter& out, const ClassRow& type, const ClassProperty& property,
                   const ClassDetail& detail) {
  const PropertyRow& row = *property.row;
  const PropertyElement element(row);
  const char* propagated = property.isOwn ? "false" : "true";
  if (detail.origins) {
    out.Open(element.name, {{"NAME", row.name},
                            {element.kind, element.type},
                            {"CLASSORIGIN", property.origin->name},
                            {"PROPAGATED", propagated}});
  } else {
    out.Open(element.name,
             {{"NAME", row.name}, {element.kind, element.type}, {"PROPAGATED", propagated}});
  }
  if (detail.qualifiers) WriteQualifiers(out, type, property);
  out.Close(element.name);
}

void WriteClassQualifiers(XmlWriter& out, const ClassRow& type) {
  if (type.isAssociation) WriteQualifier(out, "Association", "TRUE");
  if (type.isAggregation) WriteQualifier(out, "Aggregation", "TRUE");
  if (type.isIndication) WriteQualifier(out, "Indication", "TRUE");
  if (type.isAbstract) WriteQualifier(out, "Abstract", "TRUE");
  WriteQualifier(out, "Version", VersionOf(type));
  WriteQualifier(out, "Description", type.description);
}

std::string MofDeclaration(const PropertyRow& row) {
  const std::string name = row.name;
  if (row.type == CimType::Reference) return std::string(row.reference) + " REF " + name;
  return std::string(TypeName(row.type)) + " " + name + (row.isArray ? "[]" : "");
}

std::string MofList(const char* name, const NamedValue* values, const char* NamedValue::*part) {
  std::string text = std::string(",\n   ") + name + "{";
  for (const NamedValue* at = values; at->name; ++at) {
    text += (at == values ? "\"" : ", \"") + std::string(at->*part) + "\"";
  }
  return text + "}";
}

std::string MofProperty(const ClassRow& type, const ClassProperty& property) {
  const PropertyRow& row = *property.row;
  std::string text = "  [";
  if (row.isKey) text += "Key, ";
  if (IsAggregate(type, row)) text += "Aggregate, ";
  if (Overrides(type, property)) text += std::string("Override(\"") + row.name + "\"), ";
  if (row.isRequired) text += "Required, ";
  if (row.isEmbedded) text += "EmbeddedObject, ";
  if (row.type != CimType::Reference) text += "Read, ";
  if (row.isWritable) text += "Write, ";
  text += std::string("Description(\"") + row.description + "\")";
  if (row.values) {
    text += MofList("ValueMap", row.values, &NamedValue::value);
    text += MofList("Values", row.values, &NamedValue::name);
  }
  return text + "]\n  " + MofDeclaration(row) + ";\n";
}

std::string MofClass(const ClassRow& type) {
  std::string text = "[";
  if (type.isAssociation) text += "Association, ";
  if (type.isAggregation) text += "Aggregation, ";
  if (type.isIndication) text += "Indication, ";
  if (type.isAbstract) text += "Abstract, ";
  text += std::string("Version(\"") + VersionOf(type) + "\"), Description(\"" + type.description +
          "\")]\nclass " + type.name;
  if (type.parent) text += std::string(" : ") + type.parent;
  text += " {\n";
  for (const ClassProperty& property : PropertiesOf(type)) {
    if (property.isOwn) text += MofProperty(type, property);
  }
  return text + "};\n";
}

}  // namespace

void WriteClass(XmlWriter& out, const ClassRow& type, const std::vector<ClassProperty>& properties,
                const ClassDetail& detail) {
  if (type.parent) {
    out.Open("CLASS", {{"NAME", type.name}, {"SUPERCLASS", type.parent}});
  } else {
    out.Open("CLASS", {{"NAME", type.name}});
  }
  if (detail.qualifiers) WriteClassQualifiers(out, type);
  for (const ClassProperty& property : properties) {
    if (property.isOwn || !detail.localOnly) WriteProperty(out, type, property, detail);
  }
  out.Close("CLASS");
}

std::string MofText(const Namespace& space) {
  std::string text =
      "// SPDX-License-Identifier: MIT\n//\n"
      "// The classes that kecpp-agent serves in the namespace \"" +
      std::string(space.name) + "\". Written by \"kecpp-agent --print-mof " + space.name + "\".\n";
  for (const ClassRow* type : AllClasses(space.space)) text += "\n" + MofClass(*type);
  return text;
}

}  // namespace tools::agent
