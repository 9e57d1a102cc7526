// SPDX-License-Identifier: MIT
//
// The HTTP side of CIM-XML: checks a request's headers against its message and answers it.
//
// Thread safety: the handlers run on many threads at once.
#ifndef KECPP_TOOLS_AGENT_CIMENDPOINT_H
#define KECPP_TOOLS_AGENT_CIMENDPOINT_H

#include "tools/agent/AgentServer.h"
#include "tools/agent/Operations.h"
#include "tools/agent/metrics/RequestCounters.h"

namespace tools::agent {

// Adds "POST /cimom" and "POST /". `operations` and `counters` outlive the server. A request that
// cannot be understood gets status 400 or 501 and the header "CIMError", one that comes before the
// first fill 503 and "Retry-After".
void AddCimEndpoint(AgentServer& server, const Operations& operations, RequestCounters& counters);

}  // namespace tools::agent

#endif
