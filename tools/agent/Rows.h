// SPDX-License-Identifier: MIT
//
// Copies of values, in rows of equal width and packed into one buffer, so that copying ten thousand
// machines costs a few large allocations and no more.
//
// Thread safety: none.
#ifndef KECPP_TOOLS_AGENT_ROWS_H
#define KECPP_TOOLS_AGENT_ROWS_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/common/ObjectView.h"
#include "tools/common/Schema.h"

namespace tools::agent {

// Objects of one class. The key is always copied; the texts are XML texts as the inventory holds
// them.
class Rows {
 public:
  // `columns` are the properties that are copied besides the key.
  Rows(const ClassRow& type, std::vector<ClassProperty> columns);

  // Makes room for about so many rows.
  void Expect(std::size_t rows);

  // Copies an object of the class.
  void Add(const ObjectView& object);

  // Adds a row that has nothing but a key. There must be no columns.
  void AddKey(std::string_view key);

  const ClassRow& Type() const { return *type; }
  const std::vector<ClassProperty>& Columns() const { return columns; }
  std::size_t Count() const { return ends.size() / Width(); }

  std::string_view Key(std::size_t row) const { return *At(row * Width()); }
  // Nothing where the object has no such value. For lists see Items.
  std::optional<std::string_view> Value(std::size_t row, std::size_t column) const {
    return At(row * Width() + column + 1);
  }

 private:
  std::size_t Width() const { return columns.size() + 1; }
  void Put(ReadValue read, const ObjectView& object);
  std::optional<std::string_view> At(std::size_t cell) const;

  const ClassRow* type;
  std::vector<ClassProperty> columns;
  std::string texts;
  // Where each cell's text ends; a text begins where the one before ends. The lowest bit says that
  // there is a value.
  std::vector<std::size_t> ends;
};

// The items of a list's value.
std::vector<std::string_view> Items(std::string_view list);

}  // namespace tools::agent

#endif
