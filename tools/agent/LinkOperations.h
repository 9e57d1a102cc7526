// SPDX-License-Identifier: MIT
//
// The operations that walk associations, with their filters. They throw OperationError and
// NotReady.
#ifndef KECPP_TOOLS_AGENT_LINKOPERATIONS_H
#define KECPP_TOOLS_AGENT_LINKOPERATIONS_H

#include "tools/agent/Select.h"

namespace tools::agent {

// What the object in "ObjectName" is linked to, and the links themselves; those for which a
// condition holds, or all for null.
Content SelectPartners(const Call& call, Shape shape, const query::Expression* condition);
Content SelectLinks(const Call& call, Shape shape, const query::Expression* condition);

}  // namespace tools::agent

#endif
