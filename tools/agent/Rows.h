// SPDX-License-Identifier: MIT
//
// Copies of values, in rows of equal width and packed into one buffer that is used again, so that
// copying some hundred machines allocates nothing.
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

// The texts are XML texts as the inventory holds them.
class Rows {
 public:
  // A row has so many cells, at least one.
  explicit Rows(std::size_t cells) : width(cells) {}

  // Their room is used again.
  void Clear();

  // The next cell, of an object or as it is.
  void Put(ReadValue read, const ObjectView& object);
  void Put(std::string_view text);
  void PutNull();

  std::size_t Count() const { return ends.size() / width; }
  std::size_t Bytes() const { return texts.capacity() + ends.capacity() * sizeof ends[0]; }

  // Nothing where the object has no such value. In a list each item is followed by a NUL.
  std::optional<std::string_view> At(std::size_t row, std::size_t column) const;

 private:
  std::size_t width;
  std::string texts;
  // Where each cell's text ends; a text begins where the one before ends. The lowest bit says that
  // there is a value.
  std::vector<std::size_t> ends;
};

}  // namespace tools::agent

#endif
