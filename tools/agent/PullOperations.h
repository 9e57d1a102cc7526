// SPDX-License-Identifier: MIT
//
// The operations that enumerate in portions. A portion is at most what the client asks for, and at
// most some megabytes. They throw OperationError.
#ifndef KECPP_TOOLS_AGENT_PULLOPERATIONS_H
#define KECPP_TOOLS_AGENT_PULLOPERATIONS_H

#include "tools/agent/PullSessions.h"
#include "tools/agent/Select.h"

namespace tools::agent {

// The memory that an answer with a portion takes at most while it is made, but for huge texts.
constexpr std::size_t PORTION_ROOM = std::size_t{8} << 20;

using PullKind = PullSessions::Kind;

// Opens an enumeration of what one of the two selects, which the request's namespace decides.
Content OpenSelected(const Call& call, PullKind kind, Select ofInventory, Select ofStored);

Content OpenQuery(const Call& call);

// The next portion of an enumeration of that kind.
Content Pull(const Call& call, PullKind kind);

Content CloseEnumeration(const Call& call);

}  // namespace tools::agent

#endif
