// SPDX-License-Identifier: MIT
#include "tools/common/Rows.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "tools/common/Split.h"

namespace tools {

Rows::Rows(const ClassRow& rowType, std::vector<ClassProperty> wanted)
    : type(&rowType), columns(std::move(wanted)) {}

// Writes to the memory: the operating system provides a page when it is first written to.
void Rows::Expect(std::size_t rows) {
  constexpr std::size_t BYTES_PER_VALUE = 24;
  texts.resize(rows * Width() * BYTES_PER_VALUE);
  texts.clear();
  ends.resize(rows * Width());
  ends.clear();
}

void Rows::Add(KELib::Stub::KEStubBase& stub) {
  Put(type->key->read, stub);
  for (const ClassProperty& column : columns) Put(column.row->read, stub);
}

void Rows::Put(ReadValue read, KELib::Stub::KEStubBase& stub) {
  const bool hasValue = read(stub, texts);
  ends.push_back(texts.size() << 1 | (hasValue ? 1 : 0));
}

std::optional<std::string_view> Rows::At(std::size_t cell) const {
  if ((ends[cell] & 1) == 0) return {};
  const std::size_t begin = cell == 0 ? 0 : ends[cell - 1] >> 1;
  return std::string_view(texts).substr(begin, (ends[cell] >> 1) - begin);
}

std::size_t Rows::ColumnOf(std::string_view name) const {
  std::size_t column = 0;
  while (columns.at(column).row->name != name) ++column;
  return column;
}

std::vector<std::size_t> Rows::ByKey() const {
  std::vector<std::size_t> order(Count());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::sort(order.begin(), order.end(),
            [this](std::size_t a, std::size_t b) { return Key(a) < Key(b); });
  return order;
}

std::vector<std::string_view> Items(std::string_view list) {
  return Split(list, '\0');
}

}  // namespace tools
