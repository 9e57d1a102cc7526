// SPDX-License-Identifier: MIT
//
// Writes XML. Start and end tags are always written in full and text is raw UTF-8 with named
// entities: there are clients that read neither "<VALUE/>" nor numeric references.
//
// Thread safety: none.
#ifndef KECPP_TOOLS_AGENT_XMLWRITER_H
#define KECPP_TOOLS_AGENT_XMLWRITER_H

#include <cstring>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

namespace tools::agent {

class XmlWriter {
 public:
  using Attributes = std::initializer_list<std::pair<const char*, std::string_view>>;

  void Declare();  // the XML declaration, before anything else
  void Open(const char* name, Attributes attributes = {});
  void Close(const char* name);
  void Empty(const char* name, Attributes attributes);  // both tags

  // Raw text. What XML cannot hold, control characters and broken UTF-8, becomes U+FFFD.
  void Text(std::string_view raw);

  // XML text as the daemon sent it: its entities are decoded, then the text is encoded once.
  void StoredText(std::string_view xmlText);

  // What was written by a writer before.
  void Encoded(std::string_view xml) {
    if (room.size() - length < xml.size()) Grow(xml.size());
    std::memcpy(&room[length], xml.data(), xml.size());
    length += xml.size();
  }

  std::string_view Written() const { return {room.data(), length}; }
  std::size_t Bytes() const { return room.capacity(); }  // of memory
  void Clear() { length = 0; }                           // the room is used again

  // What was written; the writer is empty then.
  std::string Take();

 private:
  void Grow(std::size_t bytes);
  std::size_t PutCharacter(std::string_view raw, std::size_t at);

  // Not the string's own end: what is appended ten times for each object is copied in line.
  std::string room;
  std::size_t length = 0;  // of what was written, at the begin of `room`
};

}  // namespace tools::agent

#endif
