// SPDX-License-Identifier: MIT
//
// The page at "/" for people: files of tools/agent/page, which use the interface below "/api/v1".
#ifndef KECPP_TOOLS_AGENT_STATUSPAGE_H
#define KECPP_TOOLS_AGENT_STATUSPAGE_H

#include "tools/agent/AgentServer.h"

namespace tools::agent {

// Adds "GET /", with an entity tag, and the files that the page loads, which a browser may keep.
void AddStatusPage(AgentServer& server);

}  // namespace tools::agent

#endif
