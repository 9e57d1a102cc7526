// SPDX-License-Identifier: MIT
#include "config/ConfigComments.h"

#include <cstring>

namespace KELib {

namespace {

struct Markup {
  const char* begin;
  const char* end;
};

constexpr Markup kComment{"<!--", "-->"};
constexpr Markup kTexts[] = {{"<![CDATA[", "]]>"}, {"<?", "?>"}};

bool Begins(const char* text, const char* with) {
  return std::strncmp(text, with, std::strlen(with)) == 0;
}

// Behind the end of the markup that `from` begins; null when it has no end.
const char* EndOf(const char* from, const Markup& markup) {
  const char* const end = std::strstr(from + std::strlen(markup.begin), markup.end);
  return end != nullptr ? end + std::strlen(markup.end) : nullptr;
}

class Scan {
 public:
  // Where the next comment that is closed begins, or the text's end.
  const char* NextComment(const char* from) {
    const char* at = from;
    while ((at = std::strchr(at, '<')) != nullptr) {
      if (Begins(at, kComment.begin)) {
        if (EndOf(at, kComment) != nullptr) return at;
        break;
      }
      at = BehindText(at);
    }
    return from + std::strlen(from);
  }

 private:
  const char* BehindText(const char* at) {
    for (const Markup& markup : kTexts) {
      bool& hasNoEnd = endless[&markup - kTexts];
      if (hasNoEnd || !Begins(at, markup.begin)) continue;
      const char* const behind = EndOf(at, markup);
      if (behind != nullptr) return behind;
      hasNoEnd = true;  // nor has any later one: looking each time would be quadratic
    }
    return at + 1;
  }

  bool endless[2] = {};
};

}  // namespace

void RemoveComments(KEString& text) {
  const char* from = text.Cstr();
  Scan scan;
  const char* comment = scan.NextComment(from);
  if (*comment == '\0') return;
  KEString kept;
  unsigned int length = 0;
  char* const out = text.Str();  // what stays moves to the front of the same text
  for (;;) {
    const auto piece = static_cast<unsigned int>(comment - from);
    std::memmove(out + length, from, piece);
    length += piece;
    if (*comment == '\0') break;
    from = EndOf(comment, kComment);
    comment = scan.NextComment(from);
  }
  kept.AssignExact(out, length);
  text.Transfer(kept);
}

}  // namespace KELib
