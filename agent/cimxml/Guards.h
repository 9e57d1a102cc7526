// SPDX-License-Identifier: MIT
//
// What is asked of a request before its body is read.
#ifndef KECPP_AGENT_CIMXML_GUARDS_H
#define KECPP_AGENT_CIMXML_GUARDS_H

#include "agent/cimxml/HttpServer.h"
#include "agent/cimxml/Limits.h"
#include "agent/cimxml/Users.h"

namespace cimxml {

// Refuses requests without one host and port (400) and those of nobody's (401; `users` may be null,
// then everybody may ask). Bodies are refused that are too large, as any is that does not belong to
// a POST (413); whose length is unknown (411), told twice (400) or hidden in a coding other than
// "chunked" (501); or whose form would have to be unpacked and could grow without a bound (415).
// `users` outlives the server.
void AddGuards(HttpServer& server, Users* users, const Limits& limits);

}  // namespace cimxml

#endif
