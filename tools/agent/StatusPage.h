// SPDX-License-Identifier: MIT
//
// The page at "/" for people: files of tools/agent/page, which use the interface below "/api/v1".
#ifndef KECPP_TOOLS_AGENT_STATUSPAGE_H
#define KECPP_TOOLS_AGENT_STATUSPAGE_H

#include <functional>

#include "tools/agent/AgentServer.h"

namespace tools::agent {

// Adds "GET /", with an entity tag, and the files that the page loads, which a browser may keep.
// Each request for the page calls `whenOpened` first, on many threads at once; it must be short.
void AddStatusPage(AgentServer& server, const std::function<void()>& whenOpened);

}  // namespace tools::agent

#endif
