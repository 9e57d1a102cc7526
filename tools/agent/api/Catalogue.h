// SPDX-License-Identifier: MIT
//
// The rows of one kind of object, and their orders by the fields that were asked for.
//
// Thread safety: any number of threads may read, or one may write.
#ifndef KECPP_TOOLS_AGENT_API_CATALOGUE_H
#define KECPP_TOOLS_AGENT_API_CATALOGUE_H

#include <map>
#include <string>
#include <vector>

#include "tools/agent/api/Fields.h"
#include "tools/agent/api/LastUse.h"

namespace tools::agent::api {

class Catalogue {
 public:
  using Order = std::vector<const Entry*>;  // ascending

  const Rows& All() const { return rows; }
  const Row* Find(const std::string& key) const;

  // Null when it has to be sorted first.
  const Order* OrderBy(const Field& field) const;

  // O(n log n), unless there is such an order.
  void Sort(const Field& field);

  // To be called before so many rows are put and erased. Each costs a move of pointers in each
  // order that it changes; for many, orders are given up. So are those that nobody used for a
  // minute.
  void Expect(std::size_t changes);

  // Room for so many rows.
  void Reserve(std::size_t count) { rows.reserve(count); }

  // Moves a row with a new key in. False when there is one with that key: both stay as they are.
  bool Add(const std::string& key, Row& row);

  // Likewise, or takes the place of the one that is there.
  void Put(const std::string& key, Row row);
  void Erase(const std::string& key);

  // The values of a field have changed, besides those of the rows that were put.
  void ForgetOrder(const Field& field) { orders.erase(&field); }

 private:
  struct Sorted {
    Order entries;
    mutable LastUse use;
  };

  Rows rows;
  std::map<const Field*, Sorted> orders;
};

}  // namespace tools::agent::api

#endif
