// SPDX-License-Identifier: MIT
//
// What is kept of subscriptions while the agent does not run, as a text.
#ifndef KECPP_TOOLS_AGENT_INDICATIONS_STATETEXT_H
#define KECPP_TOOLS_AGENT_INDICATIONS_STATETEXT_H

#include <string>
#include <vector>

#include "tools/agent/Request.h"
#include "tools/common/Schema.h"

namespace tools::agent {

// An instance that a client has made.
struct KeptInstance {
  const ClassRow* type = nullptr;
  std::vector<GivenProperty> properties;
  long long failingSince = 0;  // of a destination, seconds since the epoch; 0: it does not fail
};

// JSON.
std::string WriteState(const std::vector<KeptInstance>& instances);

// Throws std::runtime_error for a text that WriteState has not written.
std::vector<KeptInstance> ReadState(const std::string& text);

}  // namespace tools::agent

#endif
