// SPDX-License-Identifier: MIT
#include "tools/agent/api/PageCursor.h"

#include <charconv>
#include <string_view>

#include "tools/agent/api/Problem.h"

namespace tools::agent::api {
namespace {

constexpr std::string_view ALPHABET =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
constexpr std::size_t LONGEST = 5000;  // a request's line has room for 8192 characters

// Base64 for addresses (RFC 4648), without padding.
std::string Encoded(std::string_view bytes) {
  std::string text;
  unsigned bits = 0, count = 0;
  for (char byte : bytes) {
    bits = bits << 8 | static_cast<unsigned char>(byte);
    for (count += 8; count >= 6; count -= 6) text += ALPHABET[bits >> (count - 6) & 63];
  }
  if (count > 0) text += ALPHABET[bits << (6 - count) & 63];
  return text;
}

std::string Decoded(std::string_view text) {
  std::string bytes;
  unsigned bits = 0, count = 0;
  for (char c : text) {
    const std::size_t value = ALPHABET.find(c);
    if (value == std::string_view::npos) throw BadRequest("this is no cursor");
    bits = bits << 6 | static_cast<unsigned>(value);
    count += 6;
    if (count < 8) continue;
    count -= 8;
    bytes += static_cast<char>(bits >> count);
  }
  return bytes;
}

// Kind, field and direction: a cursor is good for these only.
std::string Tag(const ListQuery& query) {
  return std::string(query.kind->plural) + (query.descends ? " -" : " ") + query.sort->name;
}

// Up to the next line feed; it is taken from the text.
std::string_view TakeLine(std::string_view& text) {
  const std::size_t end = text.find('\n');
  if (end == std::string_view::npos) throw BadRequest("this is no cursor");
  const std::string_view line = text.substr(0, end);
  text.remove_prefix(end + 1);
  return line;
}

std::size_t NumberIn(std::string_view text) {
  std::size_t number = 0;
  const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || stop != text.data() + text.size()) {
    throw BadRequest("this is no cursor");
  }
  return number;
}

}  // namespace

std::string CursorBehind(const Entry& last, std::size_t offset, const ListQuery& query) {
  const std::string sortKey = SortKeyOf(last, *query.sort);
  const bool fits = sortKey.size() <= LONGEST;
  return Encoded(Tag(query) +
                 (fits ? "\nbehind\n" + sortKey : "\noffset\n" + std::to_string(offset)));
}

void ReadCursor(const std::string& cursor, ListQuery& query) {
  const std::string bytes = Decoded(cursor);
  std::string_view rest = bytes;
  if (TakeLine(rest) != Tag(query)) throw BadRequest("the cursor is of another list or order");
  const std::string_view form = TakeLine(rest);
  if (form == "behind") {
    query.after = std::string(rest);
  } else if (form == "offset") {
    query.offset = NumberIn(rest);
  } else {
    throw BadRequest("this is no cursor");
  }
}

}  // namespace tools::agent::api
