// SPDX-License-Identifier: MIT
//
// Writes where a class or an instance is: its namespace and, in an absolute path, its host.
#ifndef KECPP_TOOLS_AGENT_PATHELEMENTS_H
#define KECPP_TOOLS_AGENT_PATHELEMENTS_H

#include <string_view>

#include "tools/agent/XmlWriter.h"

namespace tools::agent {

// A LOCALNAMESPACEPATH of "root/cimv2", say.
void WriteLocalNamespace(XmlWriter& out, std::string_view nameSpace);

// A NAMESPACEPATH.
void WriteNamespacePath(XmlWriter& out, std::string_view host, std::string_view nameSpace);

// A KEYBINDING with a string, which is raw text.
void WriteTextKey(XmlWriter& out, std::string_view name, std::string_view value);

}  // namespace tools::agent

#endif
