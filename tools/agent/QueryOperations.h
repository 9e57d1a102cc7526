// SPDX-License-Identifier: MIT
//
// The operation that answers queries, of the inventory and of stored instances. They throw
// OperationError.
#ifndef KECPP_TOOLS_AGENT_QUERYOPERATIONS_H
#define KECPP_TOOLS_AGENT_QUERYOPERATIONS_H

#include "tools/agent/Call.h"
#include "tools/agent/ObjectElements.h"
#include "tools/agent/query/Query.h"

namespace tools::agent {

// In any shape. The query has its own condition; there is no other.
Content SelectByQuery(const Call& call, Shape shape, const query::Expression* none);
Content SelectStoredByQuery(const Call& call, Shape shape, const query::Expression* none);

// The class that a query asks, and what it selects of it.
const ClassRow& QueriedClass(const Request& request, std::vector<ClassProperty>& selected);

Content ExecQuery(const Call& call);
Content ExecStoredQuery(const Call& call);

}  // namespace tools::agent

#endif
