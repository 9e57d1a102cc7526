// SPDX-License-Identifier: MIT
//
// The operations that enumerate in portions. A portion is at most what the client asks for, and at
// most some megabytes. They throw OperationError.
#ifndef KECPP_TOOLS_AGENT_PULLOPERATIONS_H
#define KECPP_TOOLS_AGENT_PULLOPERATIONS_H

#include "tools/agent/Call.h"

namespace tools::agent {

// The memory that an answer with a portion takes at most while it is made, but for huge texts.
constexpr std::size_t PORTION_ROOM = std::size_t{8} << 20;

Content OpenInstances(const Call& call);
Content OpenInstancePaths(const Call& call);
Content OpenAssociators(const Call& call);
Content OpenAssociatorPaths(const Call& call);
Content OpenReferences(const Call& call);
Content OpenReferencePaths(const Call& call);
Content OpenQuery(const Call& call);

Content PullWithPath(const Call& call);
Content PullPaths(const Call& call);
Content PullInstances(const Call& call);
Content CloseEnumeration(const Call& call);

}  // namespace tools::agent

#endif
