// SPDX-License-Identifier: MIT
//
// Writes the reply's text. Start and end tags are always written in full and text is raw UTF-8 with
// named entities: there are clients that read neither "<VALUE/>" nor numeric references.
//
// Thread safety: none of its own.
#ifndef KECPP_AGENT_CIMXML_XMLWRITER_H
#define KECPP_AGENT_CIMXML_XMLWRITER_H

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

namespace cimxml {

class XmlWriter {
 public:
  using Attributes = std::initializer_list<std::pair<const char*, std::string_view>>;

  void Declare();  // the XML declaration, before anything else
  void Open(const char* name, Attributes attributes = {});
  void Close(const char* name);
  void Empty(const char* name, Attributes attributes);  // both tags

  // Raw text. What cannot stand in XML, control characters and broken UTF-8, becomes U+FFFD.
  void Text(std::string_view raw);

  // XML text as the daemon sent it: its entities are decoded, then the text is encoded once.
  void StoredText(std::string_view xmlText);

  // The length so far, and the way back to it: what was written since is dropped.
  std::size_t Length() const { return out.size(); }
  void GoBack(std::size_t length) { out.resize(length); }

  std::string Take() { return std::move(out); }

 private:
  std::string out;
};

}  // namespace cimxml

#endif
