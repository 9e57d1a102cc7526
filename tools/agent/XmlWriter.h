// SPDX-License-Identifier: MIT
//
// Writes the reply's text, or only counts its bytes. Start and end tags are always written in full
// and text is raw UTF-8 with named entities: there are clients that read neither "<VALUE/>" nor
// numeric references.
//
// Thread safety: none.
#ifndef KECPP_TOOLS_AGENT_XMLWRITER_H
#define KECPP_TOOLS_AGENT_XMLWRITER_H

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

namespace tools::agent {

class XmlWriter {
 public:
  using Attributes = std::initializer_list<std::pair<const char*, std::string_view>>;

  // Counts.
  XmlWriter() = default;

  // Writes a text of that length.
  explicit XmlWriter(std::size_t expected) : writes(true) { out.reserve(expected); }

  void Declare();  // the XML declaration, before anything else
  void Open(const char* name, Attributes attributes = {});
  void Close(const char* name);
  void Empty(const char* name, Attributes attributes);  // both tags

  // Raw text. What XML cannot hold, control characters and broken UTF-8, becomes U+FFFD.
  void Text(std::string_view raw);

  // XML text as the daemon sent it: its entities are decoded, then the text is encoded once.
  void StoredText(std::string_view xmlText);

  std::size_t Length() const { return length; }
  std::string Take() { return std::move(out); }

 private:
  void Put(std::string_view text) {
    length += text.size();
    if (writes) out += text;
  }
  std::size_t PutCharacter(std::string_view raw, std::size_t at);

  bool writes = false;
  std::size_t length = 0;
  std::string out;
};

}  // namespace tools::agent

#endif
