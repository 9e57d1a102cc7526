// SPDX-License-Identifier: MIT
//
// The operation that answers queries, of the inventory and of stored instances. They throw
// OperationError.
#ifndef KECPP_TOOLS_AGENT_QUERYOPERATIONS_H
#define KECPP_TOOLS_AGENT_QUERYOPERATIONS_H

#include "tools/agent/Call.h"

namespace tools::agent {

Content ExecQuery(const Call& call);
Content ExecStoredQuery(const Call& call);

}  // namespace tools::agent

#endif
