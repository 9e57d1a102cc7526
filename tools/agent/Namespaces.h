// SPDX-License-Identifier: MIT
//
// The namespaces that are served.
//
// Thread safety: constant.
#ifndef KECPP_TOOLS_AGENT_NAMESPACES_H
#define KECPP_TOOLS_AGENT_NAMESPACES_H

#include <array>
#include <string_view>

#include "tools/common/Schema.h"

namespace tools::agent {

struct Namespace {
  const char* name;
  Space space;        // where its classes are known
  const char* alias;  // another name that requests may have; null for none
};

inline constexpr std::array<Namespace, 2> NAMESPACES = {{
    {NAMESPACE_NAME, SYSTEMS, nullptr},
    {"interop", INTEROP, "root/interop"},
}};

// Null when there is no such namespace.
inline const Namespace* FindNamespace(std::string_view name) {
  for (const Namespace& row : NAMESPACES) {
    if (SameName(row.name, name) || (row.alias && SameName(row.alias, name))) return &row;
  }
  return nullptr;
}

}  // namespace tools::agent

#endif
