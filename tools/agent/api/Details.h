// SPDX-License-Identifier: MIT
//
// One object with all its properties and what it is linked to.
//
// Thread safety: any thread.
#ifndef KECPP_TOOLS_AGENT_API_DETAILS_H
#define KECPP_TOOLS_AGENT_API_DETAILS_H

#include <kecpp/inventory.h>

#include <string>

namespace tools::agent::api {

// The JSON text of an object; empty when there is none of that key. O(its links, and theirs).
std::string DetailsOf(kecpp::Kind kind, const std::string& key, const kecpp::Inventory& inventory);

}  // namespace tools::agent::api

#endif
