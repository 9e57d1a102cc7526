// SPDX-License-Identifier: MIT
#include "tools/agent/api/Catalogue.h"

#include <algorithm>
#include <utility>

namespace tools::agent::api {
namespace {

// Beyond, it costs less to sort again than to move each.
constexpr std::size_t MOST_MOVES = 500;

bool IsBefore(const Entry& left, const Entry& right, const Field& field) {
  return Compare(ValueOf(left, field), left.first, ValueOf(right, field), right.first) < 0;
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
  Order sorted;
  sorted.reserve(rows.size());
  for (const Entry& entry : rows) sorted.push_back(&entry);
  std::sort(sorted.begin(), sorted.end(),
            [&](const Entry* left, const Entry* right) { return IsBefore(*left, *right, field); });
  orders[&field].entries = std::move(sorted);
}

void Catalogue::Expect(std::size_t changes) {
  for (auto order = orders.begin(); order != orders.end();) {
    const bool isKept = changes <= MOST_MOVES && !order->second.use.IsLongAgo();
    order = isKept ? std::next(order) : orders.erase(order);
  }
}

void Catalogue::TakeOut(const Entry& entry, const Field& field, Order& order) {
  const auto place = std::lower_bound(
      order.begin(), order.end(), &entry,
      [&](const Entry* left, const Entry* it) { return IsBefore(*left, *it, field); });
  order.erase(place);
}

void Catalogue::PutIn(const Entry& entry, const Field& field, Order& order) {
  const auto place = std::lower_bound(
      order.begin(), order.end(), &entry,
      [&](const Entry* left, const Entry* it) { return IsBefore(*left, *it, field); });
  order.insert(place, &entry);
}

void Catalogue::Put(const std::string& key, Row row) {
  const auto [place, isNew] = rows.try_emplace(key);
  Entry& entry = *place;
  const Entry next(key, std::move(row));
  std::vector<const Field*> moves;
  for (auto& [field, order] : orders) {
    if (!isNew) {
      if (Compare(ValueOf(entry, *field), key, ValueOf(next, *field), key) == 0) continue;
      TakeOut(entry, *field, order.entries);
    }
    moves.push_back(field);
  }
  entry.second = next.second;
  for (const Field* field : moves) PutIn(entry, *field, orders[field].entries);
}

void Catalogue::Erase(const std::string& key) {
  const auto place = rows.find(key);
  if (place == rows.end()) return;
  for (auto& [field, order] : orders) TakeOut(*place, *field, order.entries);
  rows.erase(place);
}

}  // namespace tools::agent::api
