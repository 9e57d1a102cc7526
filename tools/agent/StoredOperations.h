// SPDX-License-Identifier: MIT
//
// The operations that read stored instances. They throw OperationError.
#ifndef KECPP_TOOLS_AGENT_STOREDOPERATIONS_H
#define KECPP_TOOLS_AGENT_STOREDOPERATIONS_H

#include "tools/agent/Call.h"

namespace tools::agent {

Content EnumerateStored(const Call& call);
Content EnumerateStoredNames(const Call& call);
Content GetStored(const Call& call);
Content StoredAssociators(const Call& call);
Content StoredAssociatorNames(const Call& call);
Content StoredReferences(const Call& call);
Content StoredReferenceNames(const Call& call);

}  // namespace tools::agent

#endif
