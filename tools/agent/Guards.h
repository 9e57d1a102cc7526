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

// Refuses requests without one host and port (400) and those of nobody's (401). Where everybody may
// ask and the server is local, its host must be named as the loopback interface or as `address`
// (403): a page in a browser on this machine, whose name was made to resolve to it, names another.
// There must be a route (404), and one for the method (405).
// Bodies are refused that are too large, as any is that does not belong to a POST (413); that are
// no XML, or whose form would have to be unpacked and could grow without a bound (415); whose
// length is unknown (411), told twice (400) or hidden in a coding other than "chunked" (501). The
// users outlive the server.
void AddGuards(AgentServer& server, const Access& access, const Limits& limits);

}  // namespace tools::agent

#endif
