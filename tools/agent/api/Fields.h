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

// What a field sorts by: a number, or the first part of a text, which is long enough for people and
// short enough for a cursor. The text is the row's.
struct SortValue {
  std::uint32_t number = 0;
  std::string_view text;
};
SortValue ValueOf(const Entry& entry, const Field& field);

// Below, at or above 0. Rows with the same value are in the order of their keys, so only a row is
// equal to itself.
int Compare(const SortValue& left, std::string_view leftKey, const SortValue& right,
            std::string_view rightKey);

// The names of the fields that differ, in the table's order.
std::vector<const char*> Differences(kecpp::Kind kind, const Row& left, const Row& right);

}  // namespace tools::agent::api

#endif
