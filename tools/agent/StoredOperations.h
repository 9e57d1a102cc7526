// SPDX-License-Identifier: MIT
//
// The operations on stored instances. They throw OperationError.
#ifndef KECPP_TOOLS_AGENT_STOREDOPERATIONS_H
#define KECPP_TOOLS_AGENT_STOREDOPERATIONS_H

#include "tools/agent/Select.h"

namespace tools::agent {

// The instances of a class, what the object in "ObjectName" is linked to, and the links themselves;
// those for which a condition holds, or all for null.
Content SelectStored(const Call& call, Shape shape, const query::Expression* condition);
Content SelectStoredPartners(const Call& call, Shape shape, const query::Expression* condition);
Content SelectStoredLinks(const Call& call, Shape shape, const query::Expression* condition);

Content GetStored(const Call& call);

// What clients change.
Content CreateStored(const Call& call);
Content ModifyStored(const Call& call);
Content DeleteStored(const Call& call);

}  // namespace tools::agent

#endif
