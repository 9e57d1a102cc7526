// SPDX-License-Identifier: MIT
//
// The kinds of objects as the interface names them, and their fields: which sort, which are
// compared, and where a row has them.
//
// Thread safety: constant tables.
#ifndef KECPP_TOOLS_AGENT_API_FIELDS_H
#define KECPP_TOOLS_AGENT_API_FIELDS_H

#include <kecpp/inventory.h>

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "tools/agent/api/Row.h"

namespace tools::agent::api {

constexpr std::array<kecpp::Kind, 5> KINDS = {kecpp::Kind::host, kecpp::Kind::machine,
                                              kecpp::Kind::role, kecpp::Kind::privilege,
                                              kecpp::Kind::identity};

struct Field {
  enum class In { key, text, number, power, health, host, digest };

  const char* name;
  In in;
  std::size_t index;  // of texts, numbers and digests
  bool sorts;
};

struct KindInfo {
  kecpp::Kind kind;
  const char* plural;         // as paths have it
  std::size_t searchedTexts;  // the first ones of a row, besides the key
  bool hasPower, hasHealth;   // to be filtered by
  std::vector<Field> fields;
};

const KindInfo& InfoOf(kecpp::Kind kind);

// Null for another text.
const KindInfo* FindPlural(std::string_view plural);

// Null for a field that does not sort.
const Field* FindSort(const KindInfo& kind, std::string_view name);

// Appends what puts a row into its place when it is compared byte by byte: the field's value and,
// for rows with the same value, the key. A value counts with its first part, which is long enough
// for people and short enough for a cursor. No two rows have the same.
void AppendSortKey(const Entry& entry, const Field& field, std::string& to);
std::string SortKeyOf(const Entry& entry, const Field& field);

// The names of the fields that differ, in the table's order.
std::vector<const char*> Differences(kecpp::Kind kind, const Row& left, const Row& right);

}  // namespace tools::agent::api

#endif
