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

// A request's query. Names and types were looked up in the class that it asks.
struct Asked {
  query::Query query;
  const ClassRow* type;
};

// The query in these parameters of a request.
Asked ReadQuery(const Request& request, const char* language, const char* text);

// The properties that are selected, as a class that is or derives from the asked one has them.
std::vector<ClassProperty> Selected(const query::Query& query, const ClassRow& type);

Content SelectByQuery(const Call& call, const Asked& asked, Shape shape);
Content SelectStoredByQuery(const Call& call, const Asked& asked, Shape shape);

Content ExecQuery(const Call& call);
Content ExecStoredQuery(const Call& call);

}  // namespace tools::agent

#endif
