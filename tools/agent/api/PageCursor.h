// SPDX-License-Identifier: MIT
//
// The text of a cursor, which clients give back as they got it, or made up.
//
// Thread safety: functions without state.
#ifndef KECPP_TOOLS_AGENT_API_PAGECURSOR_H
#define KECPP_TOOLS_AGENT_API_PAGECURSOR_H

#include <string>

#include "tools/agent/api/ListQuery.h"

namespace tools::agent::api {

// Leads behind `last`, the page's last row; where no request could hold its sort key, to the
// `offset` that comes then.
std::string CursorBehind(const Entry& last, std::size_t offset, const ListQuery& query);

// Sets the query's place. Throws Problem when it is no cursor, or one of another kind or order.
void ReadCursor(const std::string& cursor, ListQuery& query);

}  // namespace tools::agent::api

#endif
