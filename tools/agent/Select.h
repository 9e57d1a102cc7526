// SPDX-License-Identifier: MIT
//
// Operations that differ only in the shape of their answer and in a filter share a function: what
// the request names, in a shape, and of it what a condition holds for; all for null.
#ifndef KECPP_TOOLS_AGENT_SELECT_H
#define KECPP_TOOLS_AGENT_SELECT_H

#include "tools/agent/Call.h"
#include "tools/agent/ObjectElements.h"
#include "tools/agent/query/Query.h"

namespace tools::agent {

using Select = Content (*)(const Call& call, Shape shape, const query::Expression* condition);

}  // namespace tools::agent

#endif
