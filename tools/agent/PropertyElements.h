// SPDX-License-Identifier: MIT
//
// The element of a property, in classes and in instances.
#ifndef KECPP_TOOLS_AGENT_PROPERTYELEMENTS_H
#define KECPP_TOOLS_AGENT_PROPERTYELEMENTS_H

#include "tools/agent/XmlWriter.h"
#include "tools/common/Schema.h"

namespace tools::agent {

// Its element, and the attribute that says what its values are with that attribute's value.
struct PropertyElement {
  const char* name;
  const char* kind;
  const char* type;

  explicit PropertyElement(const PropertyRow& row);
};

// The start tag in an instance. `origins`: with the class of origin.
void OpenProperty(XmlWriter& out, const ClassProperty& property, bool origins);

}  // namespace tools::agent

#endif
