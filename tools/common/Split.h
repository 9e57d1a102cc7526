// SPDX-License-Identifier: MIT
//
// The parts of a text. Thread safety: any thread.
#ifndef KECPP_TOOLS_COMMON_SPLIT_H
#define KECPP_TOOLS_COMMON_SPLIT_H

#include <string_view>
#include <vector>

namespace tools {

// Takes the part before the first separator off the list, and the separator; the whole list when it
// has none.
std::string_view TakePart(std::string_view& list, char separator);

// What is between the separators, empty parts too; nothing for an empty text, and no part behind a
// separator that ends it. The parts are views of `list`.
std::vector<std::string_view> Split(std::string_view list, char separator);

}  // namespace tools

#endif
