// SPDX-License-Identifier: MIT
#include "tools/common/Split.h"

#include <algorithm>

namespace tools {

std::string_view TakePart(std::string_view& list, char separator) {
  const std::string_view part = list.substr(0, list.find(separator));
  list.remove_prefix(std::min(part.size() + 1, list.size()));
  return part;
}

std::vector<std::string_view> Split(std::string_view list, char separator) {
  std::vector<std::string_view> parts;
  while (!list.empty()) parts.push_back(TakePart(list, separator));
  return parts;
}

}  // namespace tools
