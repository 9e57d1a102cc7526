// SPDX-License-Identifier: MIT
//
// The association operations on classes: what the instances of a class can be linked with. They
// need no inventory and never wait. They throw OperationError.
#ifndef KECPP_TOOLS_AGENT_CLASSLINKS_H
#define KECPP_TOOLS_AGENT_CLASSLINKS_H

#include "tools/agent/Call.h"

namespace tools::agent {

// The associations with a reference to the class or to one above it.
Content ClassReferences(const Call& call);
Content ClassReferenceNames(const Call& call);

// The classes of their other references.
Content ClassAssociators(const Call& call);
Content ClassAssociatorNames(const Call& call);

}  // namespace tools::agent

#endif
