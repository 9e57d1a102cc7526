// SPDX-License-Identifier: MIT
#include "xml/XmlEscape.h"

#include <cstdlib>
#include <cstring>

#include "foundation/KEStringBuffer.h"
#include "xml/XmlConstants.h"

namespace KELib::Xml {

namespace {

// A recognised entity at an "&": its length and its character.
struct Entity {
  unsigned int length = 0;  // 0: none
  unsigned long character = 0;
};

struct Named {
  const char* text;
  char character;
};

const Named kNamed[] = {
    {"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}};

bool IsXmlCharacter(unsigned long c) {
  const bool surrogate = c >= 0xD800 && c <= 0xDFFF;
  return c > 0 && c <= 0x10FFFF && !surrogate;
}

Entity NumericAt(const char* at) {
  const bool hex = at[2] == 'x';
  const char* digits = at + (hex ? 3 : 2);
  const std::size_t count = std::strspn(digits, hex ? "0123456789abcdefABCDEF" : "0123456789");
  if (count == 0 || count > 8 || digits[count] != ';') return {};
  const unsigned long c = std::strtoul(digits, nullptr, hex ? 16 : 10);
  if (!IsXmlCharacter(c)) return {};
  return {static_cast<unsigned int>(digits + count + 1 - at), c};
}

Entity EntityAt(const char* at) {
  if (at[1] == '#') return NumericAt(at);
  for (const Named& named : kNamed) {
    const std::size_t length = std::strlen(named.text);
    if (std::strncmp(at, named.text, length) == 0) {
      return {static_cast<unsigned int>(length), static_cast<unsigned char>(named.character)};
    }
  }
  return {};
}

void AppendUtf8(KEStringBuffer& out, unsigned long c) {
  const auto tail = [&](int shift) { out.Append(static_cast<char>(0x80 | ((c >> shift) & 0x3F))); };
  if (c < 0x80) {
    out.Append(static_cast<char>(c));
  } else if (c < 0x800) {
    out.Append(static_cast<char>(0xC0 | (c >> 6)));
    tail(0);
  } else if (c < 0x10000) {
    out.Append(static_cast<char>(0xE0 | (c >> 12)));
    tail(6);
    tail(0);
  } else {
    out.Append(static_cast<char>(0xF0 | (c >> 18)));
    tail(12);
    tail(6);
    tail(0);
  }
}

// Take the finished text over, with the buffer's room or without.
void Finish(KEStringBuffer& text, KEStringBuffer& out) {
  out.Transfer(text);
}
void Finish(KEStringBuffer& text, KEString& out) {
  out.AssignExact(text.Str(), text.Length());
}

template <typename Text>
void Escape(const char* text, Text& out, bool keepEntities) {
  KEStringBuffer escaped(0);
  while (text != nullptr && *text != '\0') {
    const std::size_t plain = std::strcspn(text, "&<>");
    if (plain > 0) escaped.Append(text, static_cast<unsigned int>(plain));
    text += plain;
    if (*text == '<') escaped.Append(ESCAPE_CHAR_CLOSE_ELEM);
    if (*text == '>') escaped.Append(ESCAPE_CHAR_OPEN_ELEM);
    if (*text == '&') {
      const bool entity = keepEntities && EntityAt(text).length > 0;
      escaped.Append(entity ? "&" : ESCAPE_CHAR_AMP);
    }
    if (*text != '\0') ++text;
  }
  Finish(escaped, out);
}

template <typename Text>
void Decode(const char* xmlText, Text& out) {
  KEStringBuffer decoded(0);
  while (xmlText != nullptr && *xmlText != '\0') {
    const std::size_t plain = std::strcspn(xmlText, "&");
    if (plain > 0) decoded.Append(xmlText, static_cast<unsigned int>(plain));
    xmlText += plain;
    if (*xmlText == '\0') break;
    const Entity entity = EntityAt(xmlText);
    if (entity.length > 0) {
      AppendUtf8(decoded, entity.character);
    } else {
      decoded.Append('&');
    }
    xmlText += entity.length > 0 ? entity.length : 1;
  }
  Finish(decoded, out);
}

}  // namespace

void EscapeText(const char* raw, KEString& out) {
  Escape(raw, out, false);
}

void EscapeStray(const char* xmlText, KEString& out) {
  Escape(xmlText, out, true);
}

void DecodeEntities(const char* xmlText, KEString& out) {
  Decode(xmlText, out);
}

void EscapeText(const char* raw, KEStringBuffer& out) {
  Escape(raw, out, false);
}

void EscapeStray(const char* xmlText, KEStringBuffer& out) {
  Escape(xmlText, out, true);
}

void DecodeEntities(const char* xmlText, KEStringBuffer& out) {
  Decode(xmlText, out);
}

}  // namespace KELib::Xml
