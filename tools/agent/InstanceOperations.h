// SPDX-License-Identifier: MIT
//
// The operations on instances. They throw OperationError and NotReady.
#ifndef KECPP_TOOLS_AGENT_INSTANCEOPERATIONS_H
#define KECPP_TOOLS_AGENT_INSTANCEOPERATIONS_H

#include "tools/agent/Select.h"

namespace tools::agent {

// The instances of a class and of those that derive from it, objects before the links of
// associations; those for which a condition holds, or all for null.
Content SelectInstances(const Call& call, Shape shape, const query::Expression* condition);

Content GetInstance(const Call& call);

}  // namespace tools::agent

#endif
