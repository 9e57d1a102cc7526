// SPDX-License-Identifier: MIT
//
// The page at "/" for people, and the stream of events that keeps it true.
#ifndef KECPP_TOOLS_AGENT_STATUSPAGE_H
#define KECPP_TOOLS_AGENT_STATUSPAGE_H

#include "tools/agent/AgentServer.h"
#include "tools/agent/Limits.h"
#include "tools/agent/StatusFeed.h"

namespace tools::agent {

// Adds "GET /" and "GET /events". At most half of the connections may be event streams, so that
// pages that were left open keep no CIM client out. `feed` outlives the server.
void AddStatusPage(AgentServer& server, const StatusFeed& feed, const Limits& limits);

}  // namespace tools::agent

#endif
