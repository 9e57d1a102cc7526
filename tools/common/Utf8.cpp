// SPDX-License-Identifier: MIT
#include "tools/common/Utf8.h"

namespace tools {
namespace {

bool IsContinuation(unsigned char c) {
  return (c & 0xC0) == 0x80;
}

}  // namespace

std::size_t SequenceLength(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(0);
  const std::size_t length = lead < 0x80   ? 1
                             : lead < 0xC2 ? 0
                             : lead < 0xE0 ? 2
                             : lead < 0xF0 ? 3
                             : lead < 0xF5 ? 4
                                           : 0;
  if (length == 0 || text.size() < length) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if (!IsContinuation(byte(i))) return 0;
  }
  if (lead == 0xE0 && byte(1) < 0xA0) return 0;
  if (lead == 0xED && byte(1) > 0x9F) return 0;
  if (lead == 0xF0 && byte(1) < 0x90) return 0;
  if (lead == 0xF4 && byte(1) > 0x8F) return 0;
  if (lead == 0xEF && byte(1) == 0xBF && byte(2) > 0xBD) return 0;
  return length;
}

}  // namespace tools
