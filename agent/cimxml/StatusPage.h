// SPDX-License-Identifier: MIT
//
// The page at "/" for people, and the stream of events that keeps it true.
#ifndef KECPP_AGENT_CIMXML_STATUSPAGE_H
#define KECPP_AGENT_CIMXML_STATUSPAGE_H

#include "agent/cimxml/HttpServer.h"
#include "agent/cimxml/Limits.h"
#include "agent/cimxml/StatusFeed.h"

namespace cimxml {

// Adds "GET /" and "GET /events". At most half of the connections may be event streams, so that
// pages that were left open keep no CIM client out. `feed` outlives the server.
void AddStatusPage(HttpServer& server, StatusFeed& feed, const Limits& limits);

}  // namespace cimxml

#endif
