// SPDX-License-Identifier: MIT
//
// What the writer wrote or the reader read last, and what is expected next.
#ifndef KECPP_XML_XMLTOKENSTATE_H
#define KECPP_XML_XMLTOKENSTATE_H

#include "foundation/KEExport.h"

namespace KELib::Xml {

// Last: 0 document start, 2 element name, 4 attribute, 5 start tag closed, 6 empty element,
// 7 value, 13 element ended.
// Expected: 1 element start, 2 element name, 3 inside a start tag, 5 its end, 6 end of an empty
// element, 7 value, 8 child element, 10 end tag, 11 its name, 12 its end, 13 line feed,
// 14 carriage return.
using XmlTokenType = int;

// True for b to y, B to Y and 1 to 8 only: the outermost characters do not count.
KECPP_API bool IsAlphaNum(char c);

// The class of character `c`, with `next` behind it, after a token of type `last`.
KECPP_API XmlTokenType GetTokenType(XmlTokenType last, char c, char next);

class KECPP_API XmlTokenState {
 public:
  // As in front of a document.
  void Reset() {
    expectedType = 2;
    lastType = 0;
  }

  // What comes next: given, or told from the next two characters. A range includes both its ends.
  void SetExpectedType(XmlTokenType type) { expectedType = type; }
  void SetExpectedType(char current, char next) {
    expectedType = GetTokenType(lastType, current, next);
  }
  XmlTokenType GetExpectedType() const { return expectedType; }
  bool IsExpectedType(XmlTokenType type) const { return expectedType == type; }
  bool IsExpectedTypeRange(XmlTokenType low, XmlTokenType high) const {
    return expectedType >= low && expectedType <= high;
  }

  // What was read or written last. A range includes both its ends.
  void SetLastType(XmlTokenType type) { lastType = type; }
  XmlTokenType GetLastType() const { return lastType; }
  bool WasLastType(XmlTokenType type) const { return lastType == type; }
  bool WasLastTypeRange(XmlTokenType low, XmlTokenType high) const {
    return lastType >= low && lastType <= high;
  }

 private:
  XmlTokenType expectedType = 2;
  XmlTokenType lastType = 0;
};

}  // namespace KELib::Xml

#endif
