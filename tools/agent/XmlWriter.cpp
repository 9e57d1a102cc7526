// SPDX-License-Identifier: MIT
#include "tools/agent/XmlWriter.h"

#include <kecpp/inventory.h>

#include <algorithm>
#include <array>

#include "tools/common/Utf8.h"

namespace tools::agent {
namespace {

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
