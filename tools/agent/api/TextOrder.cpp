// SPDX-License-Identifier: MIT
#include "tools/agent/api/TextOrder.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace tools::agent::api {
namespace {

constexpr char END = '\0';
constexpr char ESCAPE = '\1';  // before END and itself
constexpr char NUMBER = '0';   // where any digit would be
constexpr std::size_t MOST_DIGITS = 255;

char Lower(char c) {
  return static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
}

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// How many digits it has, then the digits, without leading zeros: takes it from the text.
void AppendNumber(std::string_view& text, std::string& to) {
  while (!text.empty() && text.front() == '0') text.remove_prefix(1);
  std::size_t length = 0;
  while (length < text.size() && IsDigit(text[length])) ++length;
  to += NUMBER;
  for (std::size_t left = length;; left -= MOST_DIGITS) {
    to += static_cast<char>(std::min(left, MOST_DIGITS));
    if (left < MOST_DIGITS) break;
  }
  to.append(text.data(), length);
  text.remove_prefix(length);
}

}  // namespace

void AppendSortable(std::string_view text, std::string& to) {
  while (!text.empty()) {
    const char c = text.front();
    if (IsDigit(c)) {
      AppendNumber(text, to);
      continue;
    }
    if (c == END || c == ESCAPE) to += ESCAPE;
    to += Lower(c);
    text.remove_prefix(1);
  }
  to += END;
}

std::string Lowered(std::string_view text) {
  std::string lowered(text);
  for (char& c : lowered) c = Lower(c);
  return lowered;
}

// The usual text fits into the array: no memory is allocated for each of 100,000 rows.
bool Contains(std::string_view text, std::string_view lowered) {
  std::array<char, 512> small;
  if (text.size() > small.size()) return Lowered(text).find(lowered) != std::string::npos;
  std::transform(text.begin(), text.end(), small.begin(), Lower);
  return memmem(small.data(), text.size(), lowered.data(), lowered.size()) != nullptr;
}

}  // namespace tools::agent::api
