// SPDX-License-Identifier: MIT
#include "tools/agent/Qualifiers.h"

#include <strings.h>

#include <algorithm>
#include <iterator>
#include <string>

#include "tools/common/Schema.h"

namespace tools::agent {
namespace {

enum Scope : unsigned {
  CLASS = 1,
  ASSOCIATION = 2,
  REFERENCE = 4,
  PROPERTY = 8,
  METHOD = 16,
  PARAMETER = 32,
  INDICATION = 64,
  ANY = 127
};

// Those that differ from what holds when nothing is said: overridable, and inherited.
enum Flavor : unsigned { FIXED = 1, RESTRICTED = 2, TRANSLATABLE = 4 };

// Sorted by name, without letter case.
constexpr QualifierRow QUALIFIERS[] = {
    {"Abstract", "boolean", false, "FALSE", CLASS | ASSOCIATION | INDICATION, RESTRICTED},
    {"Aggregate", "boolean", false, "FALSE", REFERENCE, FIXED},
    {"Aggregation", "boolean", false, "FALSE", ASSOCIATION, FIXED},
    {"Alias", "string", false, nullptr, PROPERTY | REFERENCE | METHOD, TRANSLATABLE},
    {"ArrayType", "string", false, "Bag", PROPERTY | PARAMETER, FIXED},
    {"Association", "boolean", false, "FALSE", ASSOCIATION, FIXED},
    {"BitMap", "string", true, nullptr, PROPERTY | METHOD | PARAMETER, 0},
    {"BitValues", "string", true, nullptr, PROPERTY | METHOD | PARAMETER, TRANSLATABLE},
    {"ClassConstraint", "string", true, nullptr, CLASS | ASSOCIATION | INDICATION, 0},
    {"Composition", "boolean", false, "FALSE", ASSOCIATION, FIXED},
    {"Correlatable", "string", true, nullptr, PROPERTY, 0},
    {"Counter", "boolean", false, "FALSE", PROPERTY | METHOD | PARAMETER, 0},
    {"Delete", "boolean", false, "FALSE", ASSOCIATION | REFERENCE, 0},
    {"Deprecated", "string", true, nullptr, ANY, RESTRICTED},
    {"Description", "string", false, nullptr, ANY, TRANSLATABLE},
    {"DisplayDescription", "string", false, nullptr, ANY, TRANSLATABLE},
    {"DisplayName", "string", false, nullptr, ANY, TRANSLATABLE},
    {"DN", "boolean", false, "FALSE", PROPERTY | METHOD | PARAMETER, FIXED},
    {"EmbeddedInstance", "string", false, nullptr, PROPERTY | METHOD | PARAMETER, 0},
    {"EmbeddedObject", "boolean", false, "FALSE", PROPERTY | METHOD | PARAMETER, FIXED},
    {"Exception", "boolean", false, "FALSE", CLASS | INDICATION, FIXED},
    {"Expensive", "boolean", false, "FALSE", ANY, 0},
    {"Experimental", "boolean", false, "FALSE", ANY, RESTRICTED},
    {"Gauge", "boolean", false, "FALSE", PROPERTY | METHOD | PARAMETER, 0},
    {"Ifdeleted", "boolean", false, "FALSE", ASSOCIATION | REFERENCE, 0},
    {"In", "boolean", false, "TRUE", PARAMETER, FIXED},
    {"Indication", "boolean", false, "FALSE", CLASS | INDICATION, FIXED},
    {"Invisible", "boolean", false, "FALSE", CLASS | ASSOCIATION | PROPERTY | REFERENCE | METHOD,
     0},
    {"IsPUnit", "boolean", false, "FALSE", PROPERTY | METHOD | PARAMETER, 0},
    {"Key", "boolean", false, "FALSE", PROPERTY | REFERENCE, FIXED},
    {"Large", "boolean", false, "FALSE", CLASS | PROPERTY, 0},
    {"MappingStrings", "string", true, nullptr, ANY, 0},
    {"Max", "uint32", false, nullptr, REFERENCE, 0},
    {"MaxLen", "uint32", false, nullptr, PROPERTY | METHOD | PARAMETER, 0},
    {"MaxValue", "sint64", false, nullptr, PROPERTY | METHOD | PARAMETER, 0},
    {"MethodConstraint", "string", true, nullptr, METHOD, 0},
    {"Min", "uint32", false, "0", REFERENCE, 0},
    {"MinLen", "uint32", false, "0", PROPERTY | METHOD | PARAMETER, 0},
    {"MinValue", "sint64", false, nullptr, PROPERTY | METHOD | PARAMETER, 0},
    {"ModelCorrespondence", "string", true, nullptr, ANY, 0},
    {"NullValue", "string", false, nullptr, PROPERTY, FIXED},
    {"Octetstring", "boolean", false, "FALSE", PROPERTY | METHOD | PARAMETER, FIXED},
    {"Out", "boolean", false, "FALSE", PARAMETER, FIXED},
    {"Override", "string", false, nullptr, PROPERTY | REFERENCE | METHOD, RESTRICTED},
    {"Propagated", "string", false, nullptr, PROPERTY, FIXED},
    {"PropertyConstraint", "string", true, nullptr, PROPERTY | REFERENCE, 0},
    {"PropertyUsage", "string", false, "CurrentContext", PROPERTY, 0},
    {"Provider", "string", false, nullptr, ANY, 0},
    {"PUnit", "string", false, nullptr, PROPERTY | METHOD | PARAMETER, 0},
    {"Read", "boolean", false, "TRUE", PROPERTY, 0},
    {"Reference", "string", false, nullptr, PROPERTY, 0},
    {"Required", "boolean", false, "FALSE", PROPERTY | REFERENCE | METHOD | PARAMETER, FIXED},
    {"Revision", "string", false, nullptr, CLASS | ASSOCIATION | INDICATION, TRANSLATABLE},
    {"Schema", "string", false, nullptr, PROPERTY | METHOD, FIXED | TRANSLATABLE},
    {"Static", "boolean", false, "FALSE", PROPERTY | METHOD, FIXED},
    {"Structure", "boolean", false, "FALSE", CLASS | INDICATION, FIXED},
    {"Syntax", "string", false, nullptr, PROPERTY | REFERENCE | METHOD | PARAMETER, 0},
    {"SyntaxType", "string", false, nullptr, PROPERTY | REFERENCE | METHOD | PARAMETER, 0},
    {"Terminal", "boolean", false, "FALSE", CLASS | ASSOCIATION | INDICATION, 0},
    {"TriggerType", "string", false, nullptr,
     CLASS | ASSOCIATION | INDICATION | PROPERTY | REFERENCE | METHOD, 0},
    {"UMLPackagePath", "string", false, nullptr, CLASS | ASSOCIATION | INDICATION, 0},
    {"Units", "string", false, nullptr, PROPERTY | METHOD | PARAMETER, TRANSLATABLE},
    {"UnknownValues", "string", true, nullptr, PROPERTY, FIXED},
    {"UnsupportedValues", "string", true, nullptr, PROPERTY, FIXED},
    {"ValueMap", "string", true, nullptr, PROPERTY | METHOD | PARAMETER, 0},
    {"Values", "string", true, nullptr, PROPERTY | METHOD | PARAMETER, TRANSLATABLE},
    {"Version", "string", false, nullptr, CLASS | ASSOCIATION | INDICATION,
     RESTRICTED | TRANSLATABLE},
    {"Weak", "boolean", false, "FALSE", REFERENCE, FIXED},
    {"Write", "boolean", false, "FALSE", PROPERTY, 0},
    {"XMLNamespaceName", "string", false, nullptr, PROPERTY | METHOD | PARAMETER, 0},
};

const char* Said(unsigned bits, unsigned bit) {
  return bits & bit ? "true" : "false";
}

const char* Denied(unsigned bits, unsigned bit) {
  return Said(~bits, bit);
}

}  // namespace

QualifierTable AllQualifiers() {
  return {QUALIFIERS, std::size(QUALIFIERS)};
}

const QualifierRow* FindQualifier(std::string_view name) {
  const std::string wanted(name);
  const auto* found = std::lower_bound(std::begin(QUALIFIERS), std::end(QUALIFIERS), wanted,
                                       [](const QualifierRow& row, const std::string& other) {
                                         return strcasecmp(row.name, other.c_str()) < 0;
                                       });
  return found != std::end(QUALIFIERS) && SameName(found->name, name) ? found : nullptr;
}

void WriteDeclaration(XmlWriter& out, const QualifierRow& row) {
  out.Open("QUALIFIER.DECLARATION", {{"NAME", row.name},
                                     {"TYPE", row.type},
                                     {"ISARRAY", row.isArray ? "true" : "false"},
                                     {"OVERRIDABLE", Denied(row.flavors, FIXED)},
                                     {"TOSUBCLASS", Denied(row.flavors, RESTRICTED)},
                                     {"TRANSLATABLE", Said(row.flavors, TRANSLATABLE)}});
  out.Empty("SCOPE", {{"CLASS", Said(row.scopes, CLASS)},
                      {"ASSOCIATION", Said(row.scopes, ASSOCIATION)},
                      {"REFERENCE", Said(row.scopes, REFERENCE)},
                      {"PROPERTY", Said(row.scopes, PROPERTY)},
                      {"METHOD", Said(row.scopes, METHOD)},
                      {"PARAMETER", Said(row.scopes, PARAMETER)},
                      {"INDICATION", Said(row.scopes, INDICATION)}});
  if (row.standard) {
    out.Open("VALUE");
    out.Text(row.standard);
    out.Close("VALUE");
  }
  out.Close("QUALIFIER.DECLARATION");
}

void OpenQualifier(XmlWriter& out, std::string_view name) {
  const QualifierRow& row = *FindQualifier(name);
  out.Open("QUALIFIER", {{"NAME", row.name},
                         {"TYPE", row.type},
                         {"OVERRIDABLE", Denied(row.flavors, FIXED)},
                         {"TOSUBCLASS", Denied(row.flavors, RESTRICTED)},
                         {"TRANSLATABLE", Said(row.flavors, TRANSLATABLE)}});
}

}  // namespace tools::agent
