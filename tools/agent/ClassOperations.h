// SPDX-License-Identifier: MIT
//
// The operations on classes, qualifiers and namespaces. They need no inventory and never wait. They
// throw OperationError.
#ifndef KECPP_TOOLS_AGENT_CLASSOPERATIONS_H
#define KECPP_TOOLS_AGENT_CLASSOPERATIONS_H

#include "tools/agent/Call.h"

namespace tools::agent {

// The classes below "ClassName", or below none: all of them or, without "DeepInheritance", only
// those directly below.
Content EnumerateClasses(const Call& call);
Content EnumerateClassNames(const Call& call);

Content GetClass(const Call& call);

// The namespaces, as names of a "CIM_Namespace".
Content EnumerateNamespaces(const Call& call);

Content EnumerateQualifiers(const Call& call);
Content GetQualifier(const Call& call);

}  // namespace tools::agent

#endif
