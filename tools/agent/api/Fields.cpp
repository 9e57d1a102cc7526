// SPDX-License-Identifier: MIT
#include "tools/agent/api/Fields.h"

#include "tools/agent/api/TextOrder.h"

namespace tools::agent::api {
namespace {

constexpr std::size_t SORTED_BYTES = 256;

using In = Field::In;

// As RowOf fills them. A list has its number of entries, which sorts, and the digest of their keys.
const std::vector<KindInfo>& Table() {
  static const auto* const table = new std::vector<KindInfo>{
      {kecpp::Kind::host,
       "hosts",
       1,
       false,
       true,
       {{"key", In::key, 0, true},
        {"name", In::text, 0, true},
        {"vendor", In::text, 1, false},
        {"model", In::text, 2, false},
        {"status", In::health, 0, true},
        {"machines", In::number, 1, true},
        {"machines", In::digest, 2, false},
        {"description", In::digest, 0, false},
        {"uuid", In::digest, 1, false},
        {"operationalStatus", In::number, 0, false}}},
      {kecpp::Kind::machine,
       "machines",
       4,
       true,
       true,
       {{"key", In::key, 0, true},
        {"name", In::text, 0, true},
        {"power", In::power, 0, true},
        {"status", In::health, 0, true},
        {"host", In::host, 0, true},
        {"system", In::text, 3, true},
        {"address", In::text, 2, true},
        {"hostName", In::text, 1, false},
        {"description", In::digest, 0, false},
        {"uuid", In::digest, 1, false},
        {"path", In::digest, 2, false},
        {"powerStateText", In::digest, 3, false},
        {"operationalStatus", In::number, 0, false}}},
      {kecpp::Kind::role,
       "roles",
       1,
       false,
       false,
       {{"key", In::key, 0, true},
        {"name", In::text, 0, true},
        {"caption", In::text, 1, false},
        {"type", In::text, 2, false},
        {"description", In::digest, 0, false},
        {"privileges", In::digest, 1, false},
        {"identities", In::digest, 2, false}}},
      {kecpp::Kind::privilege,
       "privileges",
       1,
       false,
       false,
       {{"key", In::key, 0, true}, {"name", In::text, 0, true}, {"roles", In::digest, 0, false}}},
      {kecpp::Kind::identity,
       "identities",
       0,
       false,
       false,
       {{"key", In::key, 0, true},
        {"name", In::key, 0, true},  // what people call it is its key
        {"roles", In::digest, 0, false}}}};
  return *table;
}

void AppendText(std::string_view text, std::string& to) {
  AppendSortable(text.substr(0, SORTED_BYTES), to);
}

void AppendNumber(std::uint32_t number, std::string& to) {
  for (int shift = 24; shift >= 0; shift -= 8) to += static_cast<char>(number >> shift & 255);
}

bool Differ(const Field& field, const Row& left, const Row& right) {
  switch (field.in) {
    case In::text:
      return left.texts.At(field.index) != right.texts.At(field.index);
    case In::number:
      return left.numbers[field.index] != right.numbers[field.index];
    case In::digest:
      return left.digests[field.index] != right.digests[field.index];
    case In::power:
      return left.power != right.power;
    case In::health:
      return left.health != right.health;
    case In::host:
      return left.host != right.host;
    default:
      return false;
  }
}

}  // namespace

const KindInfo& InfoOf(kecpp::Kind kind) {
  return Table()[static_cast<std::size_t>(kind)];
}

const KindInfo* FindPlural(std::string_view plural) {
  for (const KindInfo& info : Table()) {
    if (plural == info.plural) return &info;
  }
  return nullptr;
}

const Field* FindSort(const KindInfo& kind, std::string_view name) {
  for (const Field& field : kind.fields) {
    if (field.sorts && name == field.name) return &field;
  }
  return nullptr;
}

void AppendSortKey(const Entry& entry, const Field& field, std::string& to) {
  const Row& row = entry.second;
  if (field.in == In::text) AppendText(row.texts.At(field.index), to);
  if (field.in == In::number) AppendNumber(row.numbers[field.index], to);
  if (field.in == In::power) to += static_cast<char>(row.power);
  if (field.in == In::health) to += static_cast<char>(row.health);
  if (field.in == In::host) to += static_cast<char>(row.host != nullptr);
  if (field.in == In::host && row.host) AppendText(row.host->second.name, to);
  AppendSortable(entry.first, to);
  to += entry.first;
}

std::string SortKeyOf(const Entry& entry, const Field& field) {
  std::string key;
  AppendSortKey(entry, field, key);
  return key;
}

std::vector<const char*> Differences(kecpp::Kind kind, const Row& left, const Row& right) {
  std::vector<const char*> names;
  for (const Field& field : InfoOf(kind).fields) {
    if (!Differ(field, left, right)) continue;
    if (names.empty() || std::string_view(names.back()) != field.name) names.push_back(field.name);
  }
  return names;
}

}  // namespace tools::agent::api
