// SPDX-License-Identifier: MIT
#include "tools/agent/api/TextOrder.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace tools::agent::api {
namespace {

unsigned char Lower(char c) {
  return static_cast<unsigned char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
}

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// The number at the begin of `text`, without leading zeros; it is taken from the text.
std::string_view TakeNumber(std::string_view& text) {
  while (!text.empty() && text.front() == '0') text.remove_prefix(1);
  std::size_t length = 0;
  while (length < text.size() && IsDigit(text[length])) ++length;
  const std::string_view number = text.substr(0, length);
  text.remove_prefix(length);
  return number;
}

int CompareNumbers(std::string_view left, std::string_view right) {
  if (left.size() != right.size()) return left.size() < right.size() ? -1 : 1;
  return left.compare(right);
}

}  // namespace

int CompareTexts(std::string_view left, std::string_view right) {
  while (!left.empty() && !right.empty()) {
    if (IsDigit(left.front()) && IsDigit(right.front())) {
      const std::string_view number = TakeNumber(left);
      if (const int order = CompareNumbers(number, TakeNumber(right))) return order;
      continue;
    }
    const int order = Lower(left.front()) - Lower(right.front());
    if (order != 0) return order;
    left.remove_prefix(1);
    right.remove_prefix(1);
  }
  return static_cast<int>(!left.empty()) - static_cast<int>(!right.empty());
}

std::string Lowered(std::string_view text) {
  std::string lowered(text);
  for (char& c : lowered) c = static_cast<char>(Lower(c));
  return lowered;
}

// The usual text fits into the array: no memory is allocated for each of 100,000 rows.
bool Contains(std::string_view text, std::string_view lowered) {
  std::array<char, 512> small;
  if (text.size() > small.size()) return Lowered(text).find(lowered) != std::string::npos;
  std::transform(text.begin(), text.end(), small.begin(),
                 [](char c) { return static_cast<char>(Lower(c)); });
  return memmem(small.data(), text.size(), lowered.data(), lowered.size()) != nullptr;
}

}  // namespace tools::agent::api
