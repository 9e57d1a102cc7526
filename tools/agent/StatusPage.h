// SPDX-License-Identifier: MIT
//
// The page at "/" for people, and the stream of events that keeps it true.
#ifndef KECPP_TOOLS_AGENT_STATUSPAGE_H
#define KECPP_TOOLS_AGENT_STATUSPAGE_H

#include "tools/agent/AgentServer.h"
#include "tools/agent/StatusFeed.h"
#include "tools/agent/StreamPlaces.h"

namespace tools::agent {

// Adds "GET /" and "GET /events". `feed` and `places` outlive the server.
void AddStatusPage(AgentServer& server, const StatusFeed& feed, const StreamPlaces& places);

}  // namespace tools::agent

#endif
