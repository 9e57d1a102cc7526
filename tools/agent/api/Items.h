// SPDX-License-Identifier: MIT
//
// Objects as JSON: an item of a list by its row, and an object with all that there is.
//
// Thread safety: functions without state; a row is the caller's.
#ifndef KECPP_TOOLS_AGENT_API_ITEMS_H
#define KECPP_TOOLS_AGENT_API_ITEMS_H

#include <kecpp/inventory.h>

#include <array>
#include <string>

#include "tools/agent/api/Json.h"
#include "tools/agent/api/Row.h"

namespace tools::agent::api {

// One number for each name.
Json NumbersOf(const std::array<const char*, 4>& names, const std::array<std::size_t, 4>& numbers);

// `host` is what is known of the machines of a host, null for other kinds.
Json ItemOf(kecpp::Kind kind, const std::string& key, const Row& row, const HostInfo* host);

}  // namespace tools::agent::api

#endif
