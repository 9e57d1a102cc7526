// SPDX-License-Identifier: MIT
#include "tools/agent/indications/LastCopies.h"

#include <utility>

namespace tools::agent {
namespace {

constexpr unsigned SEVEN_BITS = 0x7f;
constexpr unsigned MORE = 0x80;

// Seven bits a byte: lengths are small.
void PutNumber(std::string& out, std::size_t number) {
  for (; number > SEVEN_BITS; number >>= 7) out += static_cast<char>(MORE | (number & SEVEN_BITS));
  out += static_cast<char>(number);
}

std::size_t TakeNumber(std::string_view& packed) {
  std::size_t number = 0;
  for (unsigned shift = 0;; shift += 7) {
    const auto byte = static_cast<unsigned char>(packed.front());
    packed.remove_prefix(1);
    number |= static_cast<std::size_t>(byte & SEVEN_BITS) << shift;
    if (byte < MORE) return number;
  }
}

}  // namespace

std::optional<std::string> LastCopies::Replace(const std::string& key, std::string copy) {
  const auto [place, isNew] = copies.try_emplace(key);
  std::string former = std::exchange(place->second, std::move(copy));
  return isNew ? std::nullopt : std::optional(std::move(former));
}

std::optional<std::string> LastCopies::Remove(const std::string& key) {
  const auto node = copies.extract(key);
  return node ? std::optional(node.mapped()) : std::nullopt;
}

// Before each cell its length and one; 0 is null.
std::string Pack(const Rows& rows, std::size_t row, std::size_t width) {
  std::string packed;
  for (std::size_t column = 0; column < width; ++column) {
    const auto cell = rows.At(row, column);
    PutNumber(packed, cell ? cell->size() + 1 : 0);
    if (cell) packed += *cell;
  }
  packed.shrink_to_fit();
  return packed;
}

void Unpack(std::string_view packed, Rows& rows) {
  while (!packed.empty()) {
    const std::size_t length = TakeNumber(packed);
    if (length == 0) {
      rows.PutNull();
      continue;
    }
    rows.Put(packed.substr(0, length - 1));
    packed.remove_prefix(length - 1);
  }
}

}  // namespace tools::agent
