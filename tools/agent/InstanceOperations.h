// SPDX-License-Identifier: MIT
//
// The operations on instances. They throw OperationError and NotReady.
#ifndef KECPP_TOOLS_AGENT_INSTANCEOPERATIONS_H
#define KECPP_TOOLS_AGENT_INSTANCEOPERATIONS_H

#include "tools/agent/Call.h"
#include "tools/agent/ObjectElements.h"
#include "tools/agent/query/Query.h"

namespace tools::agent {

// All instances of a class and of those that derive from it, links of associations included.
// The instances of a class and of those below it, objects before links, in any shape; those for
// which a condition holds, or all for null.
Content SelectInstances(const Call& call, Shape shape, const query::Expression* condition);

Content EnumerateInstances(const Call& call);
Content EnumerateInstanceNames(const Call& call);

Content GetInstance(const Call& call);

}  // namespace tools::agent

#endif
