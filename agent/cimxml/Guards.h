// SPDX-License-Identifier: MIT
//
// What is asked of a request before its body is read.
#ifndef KECPP_AGENT_CIMXML_GUARDS_H
#define KECPP_AGENT_CIMXML_GUARDS_H

#include "agent/cimxml/HttpServer.h"
#include "agent/cimxml/Limits.h"
#include "agent/cimxml/Users.h"

namespace cimxml {

// Refuses requests of nobody's (401; `users` may be null, then everybody may ask), bodies that are
// too large (413) or of unknown length (411), and those in a form that would have to be unpacked
// (415): they could grow without a bound. `users` outlives the server.
void AddGuards(HttpServer& server, Users* users, const Limits& limits);

}  // namespace cimxml

#endif
