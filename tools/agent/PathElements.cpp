// SPDX-License-Identifier: MIT
#include "tools/agent/PathElements.h"

namespace tools::agent {

void WriteLocalNamespace(XmlWriter& out, std::string_view nameSpace) {
  out.Open("LOCALNAMESPACEPATH");
  while (!nameSpace.empty()) {
    const std::size_t slash = nameSpace.find('/');
    out.Empty("NAMESPACE", {{"NAME", nameSpace.substr(0, slash)}});
    nameSpace.remove_prefix(slash == std::string_view::npos ? nameSpace.size() : slash + 1);
  }
  out.Close("LOCALNAMESPACEPATH");
}

void WriteNamespacePath(XmlWriter& out, std::string_view host, std::string_view nameSpace) {
  out.Open("NAMESPACEPATH");
  out.Open("HOST");
  out.Text(host);
  out.Close("HOST");
  WriteLocalNamespace(out, nameSpace);
  out.Close("NAMESPACEPATH");
}

void WriteTextKey(XmlWriter& out, std::string_view name, std::string_view value) {
  out.Open("KEYBINDING", {{"NAME", name}});
  out.Open("KEYVALUE", {{"VALUETYPE", "string"}, {"TYPE", "string"}});
  out.Text(value);
  out.Close("KEYVALUE");
  out.Close("KEYBINDING");
}

}  // namespace tools::agent
