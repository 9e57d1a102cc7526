// SPDX-License-Identifier: MIT
//
// Writes classes as CIM-XML elements, and all of them as a MOF file.
#ifndef KECPP_TOOLS_AGENT_CLASSELEMENTS_H
#define KECPP_TOOLS_AGENT_CLASSELEMENTS_H

#include <string>

#include "tools/agent/Namespaces.h"
#include "tools/agent/XmlWriter.h"
#include "tools/common/Schema.h"

namespace tools::agent {

// What of a class is asked for.
struct ClassDetail {
  bool localOnly = true;  // no inherited properties
  bool qualifiers = true;
  bool origins = false;
};

// A CLASS element with these properties.
void WriteClass(XmlWriter& out, const ClassRow& type, const std::vector<ClassProperty>& properties,
                const ClassDetail& detail);

// Every class of a namespace, parents before children.
std::string MofText(const Namespace& space);

}  // namespace tools::agent

#endif
