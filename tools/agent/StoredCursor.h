// SPDX-License-Identifier: MIT
//
// Stored instances as a cursor gives them.
#ifndef KECPP_TOOLS_AGENT_STOREDCURSOR_H
#define KECPP_TOOLS_AGENT_STOREDCURSOR_H

#include <memory>
#include <string>
#include <vector>

#include "tools/agent/Cursor.h"
#include "tools/agent/ObjectElements.h"
#include "tools/agent/StoredInstances.h"

namespace tools::agent {

// An instance, and those of its properties that are written.
struct StoredChoice {
  Stored instance;
  std::vector<ClassProperty> properties;
};

// How they are written; `nameSpace` is the namespace's name as the client has it.
struct StoredStyle {
  Shape shape;
  std::string host;
  std::string nameSpace;
  bool origins;
};

std::unique_ptr<Cursor> StoredOnes(std::vector<StoredChoice> choices, StoredStyle style);

}  // namespace tools::agent

#endif
