// SPDX-License-Identifier: MIT
//
// What is asked of a request before its body is read.
#ifndef KECPP_TOOLS_AGENT_GUARDS_H
#define KECPP_TOOLS_AGENT_GUARDS_H

#include <string>

#include "tools/agent/AgentServer.h"
#include "tools/agent/Limits.h"
#include "tools/agent/Users.h"

namespace tools::agent {

// Who may ask.
struct Access {
  Users* users = nullptr;  // null: everybody who reaches the server
  std::string address;     // on which the server listens, as it was configured
  bool isLocal = true;     // only programs of this machine reach it
};

// Refuses requests that do not name exactly one host and port (400) and requests without a user's
// credentials (401). On a local server without users, the host must be a name of the loopback
// interface or `address` (403): a web page whose name was made to resolve to this machine sends
// another name. There must be a route for the path (404) and for the method (405). A body is
// refused when it is too large or does not belong to a POST (413), when it is not XML or is
// compressed (415), and when its length is unknown (411), given twice (400) or hidden in a coding
// other than "chunked" (501). The users outlive the server.
void AddGuards(AgentServer& server, const Access& access, const Limits& limits);

}  // namespace tools::agent

#endif
