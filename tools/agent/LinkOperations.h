// SPDX-License-Identifier: MIT
//
// The operations that walk associations, with their filters. They throw OperationError and
// NotReady.
#ifndef KECPP_TOOLS_AGENT_LINKOPERATIONS_H
#define KECPP_TOOLS_AGENT_LINKOPERATIONS_H

#include "tools/agent/Call.h"

namespace tools::agent {

// The objects that an object is linked to.
Content Associators(const Call& call);
Content AssociatorNames(const Call& call);

// The links themselves.
Content References(const Call& call);
Content ReferenceNames(const Call& call);

}  // namespace tools::agent

#endif
