// SPDX-License-Identifier: MIT
#include "tools/agent/api/Catalogue.h"

#include <algorithm>
#include <utility>

namespace tools::agent::api {
namespace {

// Beyond, it costs less to sort again than to move each.
constexpr std::size_t MOST_MOVES = 500;

// Where a row with that sort key is, or would be.
template <class Order>
auto PlaceOf(const std::string& sortKey, const Field& field, Order& order) {
  std::string other;
  return std::partition_point(order.begin(), order.end(), [&](const Entry* entry) {
    other.clear();
    AppendSortKey(*entry, field, other);
    return other < sortKey;
  });
}

// A row to be sorted. Most of them differ in the first bytes, so others need not be looked at.
struct Sortable {
  std::uint64_t first;
  std::size_t begin, size;  // of the sort key, in the text of all
  const Entry* entry;
};

std::uint64_t FirstBytes(std::string_view bytes) {
  std::uint64_t first = 0;
  for (std::size_t i = 0; i < sizeof first; ++i) {
    first = first << 8 | (i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0);
  }
  return first;
}

std::vector<Sortable> SortablesOf(const Rows& rows, const Field& field, std::string& keys) {
  std::vector<Sortable> all;
  all.reserve(rows.size());
  for (const Entry& entry : rows) {
    const std::size_t begin = keys.size();
    AppendSortKey(entry, field, keys);
    all.push_back(
        {FirstBytes(std::string_view(keys).substr(begin)), begin, keys.size() - begin, &entry});
  }
  return all;
}

}  // namespace

const Row* Catalogue::Find(const std::string& key) const {
  const auto found = rows.find(key);
  return found == rows.end() ? nullptr : &found->second;
}

const Catalogue::Order* Catalogue::OrderBy(const Field& field) const {
  const auto found = orders.find(&field);
  if (found == orders.end()) return nullptr;
  found->second.use.Touch();
  return &found->second.entries;
}

void Catalogue::Sort(const Field& field) {
  if (OrderBy(field)) return;
  std::string keys;
  std::vector<Sortable> all = SortablesOf(rows, field, keys);
  const std::string_view text = keys;
  std::sort(all.begin(), all.end(), [&](const Sortable& left, const Sortable& right) {
    if (left.first != right.first) return left.first < right.first;
    return text.substr(left.begin, left.size) < text.substr(right.begin, right.size);
  });
  Order sorted;
  sorted.reserve(all.size());
  for (const Sortable& one : all) sorted.push_back(one.entry);
  orders[&field].entries = std::move(sorted);
}

void Catalogue::Expect(std::size_t changes) {
  for (auto order = orders.begin(); order != orders.end();) {
    const bool isKept = changes <= MOST_MOVES && !order->second.use.IsLongAgo();
    order = isKept ? std::next(order) : orders.erase(order);
  }
}

bool Catalogue::Add(const std::string& key, Row& row) {
  const auto [place, isNew] = rows.try_emplace(key, std::move(row));
  if (!isNew) return false;
  for (auto& [field, order] : orders) {
    order.entries.insert(PlaceOf(SortKeyOf(*place, *field), *field, order.entries), &*place);
  }
  return true;
}

void Catalogue::Put(const std::string& key, Row row) {
  if (Add(key, row)) return;
  Entry& entry = *rows.find(key);
  Entry next(key, std::move(row));
  for (auto& [field, order] : orders) {
    const std::string sortKey = SortKeyOf(next, *field);
    const std::string former = SortKeyOf(entry, *field);
    if (former == sortKey) continue;
    order.entries.erase(PlaceOf(former, *field, order.entries));
    order.entries.insert(PlaceOf(sortKey, *field, order.entries), &entry);
  }
  entry.second = std::move(next.second);
}

void Catalogue::Erase(const std::string& key) {
  const auto place = rows.find(key);
  if (place == rows.end()) return;
  for (auto& [field, order] : orders) {
    order.entries.erase(PlaceOf(SortKeyOf(*place, *field), *field, order.entries));
  }
  rows.erase(place);
}

}  // namespace tools::agent::api
