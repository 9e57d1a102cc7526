// SPDX-License-Identifier: MIT
//
// Copies of values, in rows of equal width and packed into one buffer, so that taking ten thousand
// machines out of a cache under its mutex costs a few large allocations and no more.
//
// Thread safety: none.
#ifndef KECPP_TOOLS_AGENT_ROWS_H
#define KECPP_TOOLS_AGENT_ROWS_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/agent/Schema.h"

namespace cimxml {

// Instances of one class. Column 0 is the key, whatever else was asked for; the texts are XML texts
// as the stubs hold them.
class Rows final : public TakeText {
 public:
  // `columns` are the properties that are copied besides the key.
  Rows(const ClassRow& type, std::vector<ClassProperty> columns);

  // Makes room for about so many rows, so that memory is got, and touched, before a mutex is held.
  void Expect(std::size_t rows);

  // Copies one stub of the class. The caller holds the mutex of its cache.
  void Add(KELib::Stub::KEStubBase& stub);

  const ClassRow& Type() const { return *type; }
  const std::vector<ClassProperty>& Columns() const { return columns; }
  std::size_t Count() const { return ends.size() / (columns.size() + 1); }

  std::string_view Key(std::size_t row) const { return *At(row * Width()); }
  // Nothing where the class has no such field.
  std::optional<std::string_view> Value(std::size_t row, std::size_t column) const {
    return At(row * Width() + column + 1);
  }

 private:
  void Take(const char* text) override;
  std::size_t Width() const { return columns.size() + 1; }
  std::optional<std::string_view> At(std::size_t cell) const;

  const ClassRow* type;
  ReadValue readKey;
  std::vector<ClassProperty> columns;
  std::string texts;
  // Where each cell's text ends; a text begins where the one before ends. The lowest bit says that
  // there is a value.
  std::vector<std::size_t> ends;
};

}  // namespace cimxml

#endif
