// SPDX-License-Identifier: MIT
#include "tools/agent/Rows.h"

#include <utility>

namespace cimxml {

Rows::Rows(const ClassRow& rowType, std::vector<ClassProperty> wanted)
    : type(&rowType), readKey(rowType.key->read), columns(std::move(wanted)) {}

// The operating system gives a page when it is written to for the first time.
void Rows::Expect(std::size_t rows) {
  constexpr std::size_t BYTES_PER_VALUE = 24;
  texts.resize(rows * Width() * BYTES_PER_VALUE);
  texts.clear();
  ends.resize(rows * Width());
  ends.clear();
}

void Rows::Add(KELib::Stub::KEStubBase& stub) {
  readKey(stub, *this);
  for (const ClassProperty& column : columns) column.row->read(stub, *this);
}

void Rows::Take(const char* text) {
  if (text) texts += text;
  ends.push_back(texts.size() << 1 | (text ? 1 : 0));
}

std::optional<std::string_view> Rows::At(std::size_t cell) const {
  if ((ends[cell] & 1) == 0) return {};
  const std::size_t begin = cell == 0 ? 0 : ends[cell - 1] >> 1;
  return std::string_view(texts).substr(begin, (ends[cell] >> 1) - begin);
}

}  // namespace cimxml
