// SPDX-License-Identifier: MIT
//
// The operations that read stored instances. They throw OperationError.
#ifndef KECPP_TOOLS_AGENT_STOREDOPERATIONS_H
#define KECPP_TOOLS_AGENT_STOREDOPERATIONS_H

#include "tools/agent/Call.h"
#include "tools/agent/ObjectElements.h"
#include "tools/agent/query/Query.h"

namespace tools::agent {

// In any shape, and those for which a condition holds; null for all. The object is in "ObjectName".
Content SelectStored(const Call& call, Shape shape, const query::Expression* condition);
Content SelectStoredPartners(const Call& call, Shape shape, const query::Expression* condition);
Content SelectStoredLinks(const Call& call, Shape shape, const query::Expression* condition);

Content EnumerateStored(const Call& call);
Content EnumerateStoredNames(const Call& call);
Content GetStored(const Call& call);
Content StoredAssociators(const Call& call);
Content StoredAssociatorNames(const Call& call);
Content StoredReferences(const Call& call);
Content StoredReferenceNames(const Call& call);

}  // namespace tools::agent

#endif
