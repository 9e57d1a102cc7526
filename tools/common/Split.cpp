// SPDX-License-Identifier: MIT
#include "tools/common/Split.h"

#include <algorithm>

namespace tools {

std::vector<std::string_view> Split(std::string_view list, char separator) {
  std::vector<std::string_view> parts;
  while (!list.empty()) {
    const std::size_t end = std::min(list.find(separator), list.size());
    parts.push_back(list.substr(0, end));
    list.remove_prefix(std::min(end + 1, list.size()));
  }
  return parts;
}

}  // namespace tools
