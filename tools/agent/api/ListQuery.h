// SPDX-License-Identifier: MIT
//
// What a list is asked for, and the page that answers it.
//
// Thread safety: none.
#ifndef KECPP_TOOLS_AGENT_API_LISTQUERY_H
#define KECPP_TOOLS_AGENT_API_LISTQUERY_H

#include <optional>
#include <string>
#include <vector>

#include "tools/agent/api/Catalogue.h"
#include "tools/agent/api/Parameters.h"

namespace tools::agent::api {

struct ListQuery {
  std::string text;                // lowered; empty: any
  unsigned powers = ~0u;           // a bit for each that is asked for
  unsigned healths = ~0u;          // likewise
  std::vector<std::string> hosts;  // keys; empty: any
  const KindInfo* kind = nullptr;
  const Field* sort = nullptr;
  bool descends = false;
  std::size_t limit = 0;
  std::size_t offset = 0;  // of those that match
  // Instead of an offset: the sort key of a row that was given. It is a place that stays where it
  // is while other rows come and go.
  std::optional<std::string> after;
};

// Throws Problem for what is not understood.
ListQuery ReadListQuery(const KindInfo& kind, const Parameters& parameters);

struct Page {
  std::vector<const Entry*> entries;
  std::size_t total = 0;  // that match
  std::string next;       // the cursor of what follows; empty for nothing
};

// `order` is that of the query's field. O(log n + limit) without a filter, else O(n).
Page Select(const Catalogue::Order& order, const ListQuery& query);

}  // namespace tools::agent::api

#endif
