// SPDX-License-Identifier: MIT
//
// Which bytes of a text are characters.
//
// Thread safety: any thread.
#ifndef KECPP_TOOLS_COMMON_UTF8_H
#define KECPP_TOOLS_COMMON_UTF8_H

#include <cstddef>
#include <string_view>

namespace tools {

// U+FFFD, which stands for what is no character.
constexpr const char* REPLACEMENT = "\xEF\xBF\xBD";

// The length of the UTF-8 sequence that `text`, which is not empty, begins with; 0 when it is
// broken: cut off, too long for its character, a surrogate half, beyond Unicode or one of the two
// non-characters that XML does not have.
std::size_t SequenceLength(std::string_view text);

}  // namespace tools

#endif
