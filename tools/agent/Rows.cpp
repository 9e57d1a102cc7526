// SPDX-License-Identifier: MIT
#include "tools/agent/Rows.h"

namespace tools::agent {

void Rows::Clear() {
  texts.clear();
  ends.clear();
}

void Rows::Put(ReadValue read, const ObjectView& object) {
  const bool hasValue = read(object, texts);
  ends.push_back(texts.size() << 1 | (hasValue ? 1 : 0));
}

void Rows::Put(std::string_view text) {
  texts += text;
  ends.push_back(texts.size() << 1 | 1);
}

void Rows::PutNull() {
  ends.push_back(texts.size() << 1);
}

std::optional<std::string_view> Rows::At(std::size_t row, std::size_t column) const {
  const std::size_t cell = row * width + column;
  if ((ends[cell] & 1) == 0) return {};
  const std::size_t begin = cell == 0 ? 0 : ends[cell - 1] >> 1;
  return std::string_view(texts).substr(begin, (ends[cell] >> 1) - begin);
}

}  // namespace tools::agent
