// SPDX-License-Identifier: MIT
#include "tools/agent/api/ListQuery.h"

#include <algorithm>

#include "tools/agent/api/PageCursor.h"
#include "tools/agent/api/Problem.h"
#include "tools/agent/api/TextOrder.h"

namespace tools::agent::api {
namespace {

constexpr std::size_t MOST_ROWS = 1000;
constexpr std::size_t USUAL_ROWS = 100;
constexpr std::size_t FARTHEST = std::size_t{1000} * 1000 * 1000;

// A bit for each name that is asked for; all without the parameter.
unsigned ReadNames(const Parameters& parameters, const char* parameter, bool isKnown,
                   const std::array<const char*, 4>& names) {
  const std::vector<std::string> asked = parameters.All(parameter);
  if (asked.empty()) return ~0u;
  if (!isKnown) throw BadRequest("unknown parameter \"" + std::string(parameter) + "\"");
  unsigned bits = 0;
  for (const std::string& name : asked) {
    const auto found = std::find(names.begin(), names.end(), name);
    if (found == names.end()) {
      throw BadRequest("\"" + std::string(parameter) + "\" has no value \"" + name + "\"");
    }
    bits |= 1u << (found - names.begin());
  }
  return bits;
}

void ReadSort(const Parameters& parameters, ListQuery& query) {
  std::string name = parameters.One("sort").value_or("name");
  query.descends = name.compare(0, 1, "-") == 0;
  if (query.descends) name.erase(0, 1);
  query.sort = FindSort(*query.kind, name);
  if (!query.sort) throw BadRequest("these do not sort by \"" + name + "\"");
}

bool HasFilter(const ListQuery& query) {
  return !query.text.empty() || query.powers != ~0u || query.healths != ~0u || !query.hosts.empty();
}

bool HasText(const Entry& entry, const ListQuery& query) {
  return Contains(entry.second.texts.First(query.kind->searchedTexts), query.text) ||
         Contains(entry.first, query.text);
}

bool IsOnHost(const Row& row, const std::vector<std::string>& hosts) {
  return row.host && std::find(hosts.begin(), hosts.end(), row.host->first) != hosts.end();
}

bool Matches(const Entry& entry, const ListQuery& query) {
  const Row& row = entry.second;
  return (query.powers >> static_cast<unsigned>(row.power) & 1) != 0 &&
         (query.healths >> static_cast<unsigned>(row.health) & 1) != 0 &&
         (query.hosts.empty() || IsOnHost(row, query.hosts)) &&
         (query.text.empty() || HasText(entry, query));
}

// How many rows come before the first one behind the place, in the order's direction.
std::size_t CountBefore(const Catalogue::Order& order, const ListQuery& query) {
  if (!query.after) return 0;
  const auto behind = std::partition_point(order.begin(), order.end(), [&](const Entry* entry) {
    const int comparison = SortKeyOf(*entry, *query.sort).compare(*query.after);
    return query.descends ? comparison < 0 : comparison <= 0;
  });
  return static_cast<std::size_t>(query.descends ? order.end() - behind : behind - order.begin());
}

}  // namespace

ListQuery ReadListQuery(const KindInfo& kind, const Parameters& parameters) {
  ListQuery query;
  query.kind = &kind;
  query.text = Lowered(parameters.One("text").value_or(""));
  if (query.text.find('\0') != std::string::npos) throw BadRequest("no text has a zero in it");
  query.powers = ReadNames(parameters, "power", kind.hasPower, POWER_NAMES);
  query.healths = ReadNames(parameters, "status", kind.hasHealth, HEALTH_NAMES);
  query.hosts = parameters.All("host");
  if (!query.hosts.empty() && !kind.hasPower) throw BadRequest("unknown parameter \"host\"");
  ReadSort(parameters, query);
  query.limit = parameters.Number("limit", 1, MOST_ROWS, USUAL_ROWS);
  query.offset = parameters.Number("offset", 0, FARTHEST, 0);
  if (const auto cursor = parameters.One("cursor")) {
    if (parameters.One("offset")) throw BadRequest("a cursor and an offset exclude each other");
    ReadCursor(*cursor, query);
  }
  return query;
}

Page Select(const Catalogue::Order& order, const ListQuery& query) {
  Page page;
  const bool hasFilter = HasFilter(query);
  const std::size_t before = CountBefore(order, query);
  const std::size_t skipped = hasFilter ? 0 : std::max(before, query.offset);
  std::size_t matches = std::min(skipped, order.size());
  std::size_t end = 0;  // of the page, counted in those that match
  bool hasMore = false;
  for (std::size_t i = matches; i < order.size(); ++i) {
    const Entry& entry = *order[query.descends ? order.size() - 1 - i : i];
    if (hasFilter && !Matches(entry, query)) continue;
    ++matches;
    if (i < before || matches <= query.offset) continue;
    hasMore = page.entries.size() == query.limit;
    if (!hasMore) {
      page.entries.push_back(&entry);
      end = matches;
    } else if (!hasFilter) {
      break;
    }
  }
  page.total = hasFilter ? matches : order.size();
  if (hasMore) page.next = CursorBehind(*page.entries.back(), end, query);
  return page;
}

}  // namespace tools::agent::api
