// SPDX-License-Identifier: MIT
//
// A piece of markup, up to and with a start tag, that servers repeat: what was in it need not be
// read again where it is met again. A text that differs is read in full, and takes the place of the
// learned one when such a text has come twice since that one was met.
//
// Thread safety: of one thread at a time.
#ifndef KECPP_DATASYNC_LEARNEDTEXT_H
#define KECPP_DATASYNC_LEARNEDTEXT_H

#include <cstring>

#include "xml/KEXmlCursor.h"

namespace KE::Service {

class LearnedText {
 public:
  // Calls `take` with the text, which takes what is behind it at the cursor or returns false.
  template <typename Take>
  bool Recognise(Take take) {
    if (length == 0 || !take(text, length)) return false;
    misses = 0;
    return true;
  }

  // What is behind the text where `from` begins with it; else null. `end` is that of the document.
  const char* Behind(const char* from, const char* end) const {
    if (length == 0 || static_cast<std::size_t>(end - from) < length) return nullptr;
    return KELib::Xml::SameMarkup(from, text, length) ? from + length : nullptr;
  }

  // Such a text was read in full: it began at `begin`, and what came behind it is `value`. True
  // when it is the learned one now.
  bool Learn(const char* begin, const KELib::Xml::XmlSlice& value) {
    const char* end = value.text;
    while (end[-1] != '>') --end;  // blanks in front of a value may differ
    return Learn(begin, end);
  }

  // The same for a text from `begin` to `end`.
  bool Learn(const char* begin, const char* end) {
    const auto size = static_cast<std::size_t>(end - begin);
    if (size > kLongest || (length > 0 && ++misses < 2)) return false;
    std::memcpy(text, begin, size);
    length = size;
    misses = 0;
    return true;
  }

  // A part of the text that was learned from `begin`.
  KELib::Xml::XmlSlice Part(const char* begin, const KELib::Xml::XmlSlice& part) const {
    return {text + (part.text - begin), part.length};
  }

 private:
  static constexpr std::size_t kLongest = 496;

  std::size_t length = 0;
  unsigned int misses = 0;
  char text[kLongest];
};

}  // namespace KE::Service

#endif
