// SPDX-License-Identifier: MIT
#include "tools/agent/XmlWriter.h"

#include <kecpp/inventory.h>

#include <algorithm>
#include <array>

namespace tools::agent {
namespace {

constexpr const char* REPLACEMENT = "\xEF\xBF\xBD";

bool IsContinuation(unsigned char c) {
  return (c & 0xC0) == 0x80;
}

// The length of the UTF-8 sequence that `text` begins with, 0 when it is broken: cut off, too long
// for its character, a surrogate half, beyond Unicode or one of the two non-characters that XML
// does not have.
std::size_t SequenceLength(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(0);
  const std::size_t length = lead < 0xC2   ? 0
                             : lead < 0xE0 ? 2
                             : lead < 0xF0 ? 3
                             : lead < 0xF5 ? 4
                                           : 0;
  if (length == 0 || text.size() < length) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if (!IsContinuation(byte(i))) return 0;
  }
  if (lead == 0xE0 && byte(1) < 0xA0) return 0;
  if (lead == 0xED && byte(1) > 0x9F) return 0;
  if (lead == 0xF0 && byte(1) < 0x90) return 0;
  if (lead == 0xF4 && byte(1) > 0x8F) return 0;
  if (lead == 0xEF && byte(1) == 0xBF && byte(2) > 0xBD) return 0;
  return length;
}

// Null for a character that is written as it is.
const char* Replaced(char c) {
  switch (c) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '"':
      return "&quot;";
    case '\t':
    case '\n':
    case '\r':
      return nullptr;
    default:
      return static_cast<unsigned char>(c) < 0x20 ? REPLACEMENT : nullptr;
  }
}

// The characters that are written as they are, without a second look.
constexpr std::array<bool, 256> PLAIN = [] {
  std::array<bool, 256> plain{};
  for (unsigned char c = 0x20; c < 0x7F; ++c) plain[c] = true;
  for (const unsigned char c : {'&', '<', '>', '"'}) plain[c] = false;
  return plain;
}();

std::size_t PlainLength(std::string_view text) {
  std::size_t length = 0;
  while (length < text.size() && PLAIN[static_cast<unsigned char>(text[length])]) ++length;
  return length;
}

}  // namespace

void XmlWriter::Grow(std::size_t bytes) {
  constexpr std::size_t LEAST = 4096;
  room.resize(std::max({2 * room.size(), length + bytes, LEAST}));
}

std::string XmlWriter::Take() {
  room.resize(length);
  length = 0;
  return std::exchange(room, std::string());
}

void XmlWriter::Declare() {
  Encoded("<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n");
}

void XmlWriter::Open(const char* name, Attributes attributes) {
  Encoded("<");
  Encoded(name);
  for (const auto& [key, value] : attributes) {
    Encoded(" ");
    Encoded(key);
    Encoded("=\"");
    Text(value);
    Encoded("\"");
  }
  Encoded(">");
}

void XmlWriter::Close(const char* name) {
  Encoded("</");
  Encoded(name);
  Encoded(">");
}

void XmlWriter::Empty(const char* name, Attributes attributes) {
  Open(name, attributes);
  Close(name);
}

// The character at `at`, which is not plain. Gives the place of the next one.
std::size_t XmlWriter::PutCharacter(std::string_view raw, std::size_t at) {
  if (static_cast<unsigned char>(raw[at]) < 0x80) {
    const char* replaced = Replaced(raw[at]);
    Encoded(replaced ? replaced : raw.substr(at, 1));
    return at + 1;
  }
  const std::size_t bytes = SequenceLength(raw.substr(at));
  Encoded(bytes == 0 ? REPLACEMENT : raw.substr(at, bytes));
  return at + (bytes == 0 ? 1 : bytes);
}

void XmlWriter::Text(std::string_view raw) {
  for (std::size_t at = 0; at < raw.size();) {
    const std::size_t plain = PlainLength(raw.substr(at));
    Encoded(raw.substr(at, plain));
    at += plain;
    if (at < raw.size()) at = PutCharacter(raw, at);
  }
}

// Nearly all of these texts are plain.
void XmlWriter::StoredText(std::string_view xmlText) {
  if (PlainLength(xmlText) == xmlText.size()) {
    Encoded(xmlText);
  } else if (xmlText.find('&') == std::string_view::npos) {
    Text(xmlText);
  } else {
    Text(kecpp::Decode(xmlText));
  }
}

}  // namespace tools::agent
