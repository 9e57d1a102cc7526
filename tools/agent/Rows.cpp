// SPDX-License-Identifier: MIT
#include "tools/agent/Rows.h"

#include <utility>

#include "tools/common/Split.h"

namespace tools::agent {

Rows::Rows(const ClassRow& rowType, std::vector<ClassProperty> wanted)
    : type(&rowType), columns(std::move(wanted)) {}

void Rows::Expect(std::size_t rows) {
  constexpr std::size_t BYTES_PER_VALUE = 24;
  texts.reserve(rows * Width() * BYTES_PER_VALUE);
  ends.reserve(rows * Width());
}

void Rows::Add(const ObjectView& object) {
  Put(type->key->read, object);
  for (const ClassProperty& column : columns) Put(column.row->read, object);
}

void Rows::AddKey(std::string_view key) {
  texts += key;
  ends.push_back(texts.size() << 1 | 1);
}

void Rows::Put(ReadValue read, const ObjectView& object) {
  const bool hasValue = read(object, texts);
  ends.push_back(texts.size() << 1 | (hasValue ? 1 : 0));
}

std::optional<std::string_view> Rows::At(std::size_t cell) const {
  if ((ends[cell] & 1) == 0) return {};
  const std::size_t begin = cell == 0 ? 0 : ends[cell - 1] >> 1;
  return std::string_view(texts).substr(begin, (ends[cell] >> 1) - begin);
}

std::vector<std::string_view> Items(std::string_view list) {
  return Split(list, '\0');
}

}  // namespace tools::agent
