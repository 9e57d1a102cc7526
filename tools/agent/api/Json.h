// SPDX-License-Identifier: MIT
//
// JSON as the interface writes it.
//
// Thread safety: functions without state.
#ifndef KECPP_TOOLS_AGENT_API_JSON_H
#define KECPP_TOOLS_AGENT_API_JSON_H

#include <chrono>
#include <nlohmann/json.hpp>
#include <string>

namespace tools::agent::api {

using Json = nlohmann::ordered_json;

// In one line. Texts come from the daemon or a client and may hold anything: what is no UTF-8 is
// replaced.
inline std::string Dump(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

// UTC with milliseconds, as RFC 3339 has it; null for the epoch, which stands for none.
Json TimeText(std::chrono::system_clock::time_point time);

}  // namespace tools::agent::api

#endif
