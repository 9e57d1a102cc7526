// SPDX-License-Identifier: MIT
#include "tools/common/CellText.h"

#include <locale.h>
#include <wchar.h>

#include <algorithm>

namespace tools {
namespace {

constexpr const char* ELLIPSIS = "\xe2\x80\xa6";
constexpr wchar_t NO_CHARACTER = 0;

// The C library knows the widths only in a UTF-8 locale, and the process may use another one. Every
// installation has this locale; without it each character outside ASCII counts as one cell.
class Utf8Locale {
 public:
  Utf8Locale() : former(uselocale(Get())) {}
  ~Utf8Locale() { uselocale(former); }
  Utf8Locale(const Utf8Locale&) = delete;
  Utf8Locale& operator=(const Utf8Locale&) = delete;

 private:
  // Never freed: another thread may measure while the process ends.
  static locale_t Get() {
    static const locale_t utf8 = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    return utf8;
  }

  const locale_t former;
};

struct Character {
  wchar_t code;  // NO_CHARACTER for a byte that belongs to none
  std::size_t bytes;
};

unsigned ByteAt(const std::string& text, std::size_t at) {
  return at < text.size() ? static_cast<unsigned char>(text[at]) : 0;
}

Character CharacterAt(const std::string& text, std::size_t at) {
  constexpr unsigned LEAST[] = {0, 0, 0x80, 0x800, 0x10000};
  const unsigned first = ByteAt(text, at);
  if (first < 0x80) return {static_cast<wchar_t>(first), 1};
  const std::size_t bytes = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  unsigned code = first & (0xFFu >> (bytes + 1));
  for (std::size_t i = 1; i < bytes; ++i) {
    const unsigned byte = ByteAt(text, at + i);
    if ((byte & 0xC0) != 0x80) return {NO_CHARACTER, 1};
    code = code << 6 | (byte & 0x3F);
  }
  const bool isSurrogate = code >= 0xD800 && code < 0xE000;
  if (first < 0xC0 || first >= 0xF8 || code < LEAST[bytes] || code > 0x10FFFF || isSurrogate) {
    return {NO_CHARACTER, 1};
  }
  return {static_cast<wchar_t>(code), bytes};
}

bool Steers(wchar_t code) {
  const auto between = [code](wchar_t first, wchar_t last) {
    return code >= first && code <= last;
  };
  return code < 0x20 || between(0x7F, 0x9F) ||                // controls
         code == 0x61C || between(0x200E, 0x200F) ||          // marks of direction
         between(0x2028, 0x202E) || between(0x2066, 0x2069);  // line ends; embeddings
}

std::size_t CellsOf(wchar_t code) {
  const int cells = wcwidth(code);
  return cells < 0 ? 1 : static_cast<std::size_t>(cells);
}

// The number of bytes at the text's beginning that take at most `cells` cells.
std::size_t BytesIn(const std::string& text, std::size_t cells, std::size_t& used) {
  const Utf8Locale locale;
  std::size_t at = 0;
  for (used = 0; at < text.size();) {
    const Character character = CharacterAt(text, at);
    const std::size_t more = CellsOf(character.code);
    if (used + more > cells) break;
    used += more;
    at += character.bytes;
  }
  return at;
}

}  // namespace

std::string Printable(const std::string& text) {
  std::string clean;
  for (std::size_t at = 0; at < text.size();) {
    const Character character = CharacterAt(text, at);
    if (Steers(character.code)) {
      clean += '?';
    } else {
      clean.append(text, at, character.bytes);
    }
    at += character.bytes;
  }
  return clean;
}

std::size_t CellsOf(const std::string& printable) {
  std::size_t cells = 0;
  BytesIn(printable, static_cast<std::size_t>(-1), cells);
  return cells;
}

std::string CutToCells(const std::string& printable, std::size_t cells) {
  std::size_t used = 0;
  if (BytesIn(printable, cells, used) == printable.size()) return printable;
  return printable.substr(0, BytesIn(printable, cells - 1, used)) + ELLIPSIS;
}

}  // namespace tools
