// SPDX-License-Identifier: MIT
//
// The operations that walk associations, with their filters. They throw OperationError and
// NotReady.
#ifndef KECPP_TOOLS_AGENT_LINKOPERATIONS_H
#define KECPP_TOOLS_AGENT_LINKOPERATIONS_H

#include "tools/agent/Call.h"
#include "tools/agent/ObjectElements.h"
#include "tools/agent/query/Query.h"

namespace tools::agent {

// The objects that an object is linked to.
// In any shape, of the object in "ObjectName"; those for which a condition holds, or all for null.
Content SelectPartners(const Call& call, Shape shape, const query::Expression* condition);
Content SelectLinks(const Call& call, Shape shape, const query::Expression* condition);

Content Associators(const Call& call);
Content AssociatorNames(const Call& call);

// The links themselves.
Content References(const Call& call);
Content ReferenceNames(const Call& call);

}  // namespace tools::agent

#endif
