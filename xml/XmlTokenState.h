// SPDX-License-Identifier: MIT
//
// What the writer wrote or the reader read last, and what is expected next.
#ifndef KECPP_XML_XMLTOKENSTATE_H
#define KECPP_XML_XMLTOKENSTATE_H

#include "foundation/KEExport.h"

namespace KELib::Xml {

// The type of a token, as the promised operations below take it: one of XmlToken.
using XmlTokenType = int;

// Each type is something that was read or written last, or that is expected next, or both.
namespace XmlToken {
enum : XmlTokenType {
  none = 0,  // last: nothing yet; expected: none of the others
  elementStart = 1,
  elementName = 2,
  inStartTag = 3,
  attribute = 4,
  startTagEnd = 5,
  emptyElement = 6,  // the end of its tag
  value = 7,
  childElement = 8,
  endTag = 10,
  endTagName = 11,
  endTagEnd = 12,
  elementEnded = 13,  // last
  lineFeed = 13,      // expected: what is usually behind an element
  carriageReturn = 14
};
}  // namespace XmlToken

// True for b to y, B to Y and 1 to 8 only: the outermost characters do not count.
KECPP_API bool IsAlphaNum(char c);

// The class of character `c`, with `next` behind it, after a token of type `last`.
KECPP_API XmlTokenType GetTokenType(XmlTokenType last, char c, char next);

// What was read or written last, and what is expected next.
class KECPP_API XmlTokenState {
 public:
  // As in front of a document.
  void Reset() {
    expectedType = XmlToken::elementName;
    lastType = XmlToken::none;
  }

  // What comes next: given, or found from the next two characters. A range includes both its ends.
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
  XmlTokenType expectedType = XmlToken::elementName;
  XmlTokenType lastType = XmlToken::none;
};

}  // namespace KELib::Xml

#endif
