// SPDX-License-Identifier: MIT
//
// The qualifier declarations of CIM: the standard's 56 and its 14 optional ones.
//
// Thread safety: constant.
#ifndef KECPP_TOOLS_AGENT_QUALIFIERS_H
#define KECPP_TOOLS_AGENT_QUALIFIERS_H

#include <cstddef>
#include <string_view>

#include "tools/agent/XmlWriter.h"

namespace tools::agent {

struct QualifierRow {
  const char* name;
  const char* type;
  bool isArray;
  const char* standard;  // the value where there is none; null for no value
  unsigned scopes;       // bits
  unsigned flavors;
};

struct QualifierTable {
  const QualifierRow* rows;
  std::size_t count;

  const QualifierRow* begin() const { return rows; }
  const QualifierRow* end() const { return rows + count; }
};

// By name.
QualifierTable AllQualifiers();

// Null when there is none of that name. O(log qualifiers).
const QualifierRow* FindQualifier(std::string_view name);

// A QUALIFIER.DECLARATION.
void WriteDeclaration(XmlWriter& out, const QualifierRow& row);

// The start tag of a QUALIFIER, with the flavors of its declaration, which must be there.
void OpenQualifier(XmlWriter& out, std::string_view name);

}  // namespace tools::agent

#endif
