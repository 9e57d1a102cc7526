// SPDX-License-Identifier: MIT
//
// What a request's target names below /api/v1/. A key may have any byte, a slash too, so it is read
// from the target as it came.
//
// Thread safety: functions without state.
#ifndef KECPP_TOOLS_AGENT_API_APIPATH_H
#define KECPP_TOOLS_AGENT_API_APIPATH_H

#include <optional>
#include <string>

namespace tools::agent::api {

struct ApiPath {
  std::string name;                // "summary", "machines", "changes/stream"
  std::optional<std::string> key;  // of one object
};

// The target has the parameters, too. Throws Problem for what is no such path.
ApiPath ReadPath(const std::string& target);

}  // namespace tools::agent::api

#endif
