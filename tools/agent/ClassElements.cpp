// SPDX-License-Identifier: MIT
#include "tools/agent/ClassElements.h"

namespace tools::agent {
namespace {

// How a qualifier goes on to derived classes: as it is or overridden, only as it is, not at all.
enum class Flavor { Inherited, Fixed, Own };

void WriteQualifier(XmlWriter& out, const char* name, const char* type, std::string_view value,
                    Flavor flavor) {
  switch (flavor) {
    case Flavor::Inherited:
      out.Open("QUALIFIER", {{"NAME", name}, {"TYPE", type}});
      break;
    case Flavor::Fixed:
      out.Open("QUALIFIER", {{"NAME", name}, {"TYPE", type}, {"OVERRIDABLE", "false"}});
      break;
    case Flavor::Own:
      out.Open("QUALIFIER", {{"NAME", name}, {"TYPE", type}, {"TOSUBCLASS", "false"}});
      break;
  }
  out.Open("VALUE");
  out.Text(value);
  out.Close("VALUE");
  out.Close("QUALIFIER");
}

bool Overrides(const ClassRow& type, const ClassProperty& property) {
  return property.isOwn && property.origin != &type;
}

void WriteProperty(XmlWriter& out, const ClassRow& type, const ClassProperty& property,
                   const ClassDetail& detail) {
  const PropertyRow& row = *property.row;
  const bool isReference = row.type == CimType::Reference;
  const char* element = isReference   ? "PROPERTY.REFERENCE"
                        : row.isArray ? "PROPERTY.ARRAY"
                                      : "PROPERTY";
  const char* kind = isReference ? "REFERENCECLASS" : "TYPE";
  const char* kindName = isReference ? row.reference : TypeName(row.type);
  const char* propagated = property.isOwn ? "false" : "true";
  if (detail.origins) {
    out.Open(element, {{"NAME", row.name},
                       {kind, kindName},
                       {"CLASSORIGIN", property.origin->name},
                       {"PROPAGATED", propagated}});
  } else {
    out.Open(element, {{"NAME", row.name}, {kind, kindName}, {"PROPAGATED", propagated}});
  }
  if (detail.qualifiers) {
    if (row.isKey) WriteQualifier(out, "Key", "boolean", "TRUE", Flavor::Fixed);
    if (Overrides(type, property)) {
      WriteQualifier(out, "Override", "string", row.name, Flavor::Own);
    }
    // The standard declares it for properties only.
    if (!isReference) WriteQualifier(out, "Read", "boolean", "TRUE", Flavor::Inherited);
    WriteQualifier(out, "Description", "string", row.description, Flavor::Inherited);
  }
  out.Close(element);
}

void WriteClassQualifiers(XmlWriter& out, const ClassRow& type) {
  if (type.isAssociation) WriteQualifier(out, "Association", "boolean", "TRUE", Flavor::Fixed);
  if (type.isAbstract) WriteQualifier(out, "Abstract", "boolean", "TRUE", Flavor::Own);
  WriteQualifier(out, "Description", "string", type.description, Flavor::Inherited);
}

std::string MofDeclaration(const PropertyRow& row) {
  const std::string name = row.name;
  if (row.type == CimType::Reference) return std::string(row.reference) + " REF " + name;
  return std::string(TypeName(row.type)) + " " + name + (row.isArray ? "[]" : "");
}

std::string MofProperty(const ClassRow& type, const ClassProperty& property) {
  const PropertyRow& row = *property.row;
  std::string text = "  [";
  if (row.isKey) text += "Key, ";
  if (Overrides(type, property)) text += std::string("Override(\"") + row.name + "\"), ";
  if (row.type != CimType::Reference) text += "Read, ";
  return text + "Description(\"" + row.description + "\")]\n  " + MofDeclaration(row) + ";\n";
}

std::string MofClass(const ClassRow& type) {
  std::string text = "[";
  if (type.isAssociation) text += "Association, ";
  if (type.isAbstract) text += "Abstract, ";
  text += std::string("Description(\"") + type.description + "\")]\nclass " + type.name;
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

std::string MofText() {
  std::string text =
      "// SPDX-License-Identifier: MIT\n//\n"
      "// The classes that kecpp-agent serves in the namespace \"" +
      std::string(NAMESPACE_NAME) + "\". Written by \"kecpp-agent --print-mof\".\n";
  for (const ClassRow* type : AllClasses()) text += "\n" + MofClass(*type);
  return text;
}

}  // namespace tools::agent
