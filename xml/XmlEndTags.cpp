// SPDX-License-Identifier: MIT
#include "xml/XmlEndTags.h"

#include <algorithm>
#include <cstring>

namespace KELib::Xml {

namespace {

// A name ends at a "<" too: tags without an end would otherwise be measured to the end of the text.
unsigned int EndTagNameLength(const char* tag) {
  return static_cast<unsigned int>(std::strcspn(tag + 2, " \t\r\n<>"));
}

// The last end tag that begins in front of `before`, null when there is none.
const char* EndTagBefore(const char* begin, const char* before) {
  while (const void* found = memrchr(begin, '<', static_cast<std::size_t>(before - begin))) {
    before = static_cast<const char*>(found);
    if (before[1] == '/') return before;
  }
  return nullptr;
}

const char* Place(const KEString& text, unsigned int pos) {
  const unsigned int length = text.Length();
  return text.Cstr() + std::min(pos, length);
}

}  // namespace

bool GetPrevElementEndTag(KEString& text, unsigned int& pos, KEString& name) {
  const char* tag = EndTagBefore(text.Cstr(), Place(text, pos));
  if (tag == nullptr) return false;
  pos = static_cast<unsigned int>(tag - text.Cstr());
  KEString found;
  found.AssignExact(tag + 2, EndTagNameLength(tag));
  name.Transfer(found);
  return true;
}

bool BackupToElementEndTag(const char* name, KEString& text, unsigned int& pos) {
  if (name == nullptr || name[0] == '\0') return false;
  const std::size_t nameLength = std::strlen(name);
  const char* tag = Place(text, pos);
  while ((tag = EndTagBefore(text.Cstr(), tag)) != nullptr) {
    const unsigned int size = EndTagNameLength(tag);
    if (size != nameLength || std::memcmp(tag + 2, name, size) != 0) continue;
    pos = static_cast<unsigned int>(tag - text.Cstr());
    return true;
  }
  return false;
}

}  // namespace KELib::Xml
