// SPDX-License-Identifier: MIT
//
// Entity tags: whether a client has an answer already.
//
// Thread safety: functions without state.
#ifndef KECPP_TOOLS_AGENT_API_ENTITYTAG_H
#define KECPP_TOOLS_AGENT_API_ENTITYTAG_H

#include <string>

namespace tools::agent::api {

// The tag of an answer's body, with its quotes. Equal bodies have equal tags.
std::string EntityTagOf(const std::string& body);

// Whether the value of an If-None-Match header has the tag in its list, or is "*".
bool HasTag(const std::string& list, const std::string& tag);

}  // namespace tools::agent::api

#endif
