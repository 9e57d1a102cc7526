// SPDX-License-Identifier: MIT
#include "xml/XmlTokenState.h"

namespace KELib::Xml {

bool IsAlphaNum(char c) {
  return (c > 'a' && c < 'z') || (c > 'A' && c < 'Z') || (c > '0' && c < '9');
}

namespace {

bool InContent(XmlTokenType last) {
  return last <= XmlToken::startTagEnd || last == XmlToken::elementEnded;
}

// The class of a character behind a start tag's name, attribute or end.
XmlTokenType InStartTag(XmlTokenType last, char c) {
  if (last <= XmlToken::elementStart && IsAlphaNum(c)) return XmlToken::elementName;
  if (last <= XmlToken::inStartTag && c == ' ') return XmlToken::inStartTag;
  if (last == XmlToken::attribute && (IsAlphaNum(c) || c == ' ')) return XmlToken::inStartTag;
  if (last > XmlToken::attribute) return XmlToken::none;
  if (c == '>') return XmlToken::startTagEnd;
  return c == '/' ? XmlToken::emptyElement : XmlToken::none;
}

}  // namespace

XmlTokenType GetTokenType(XmlTokenType last, char c, char next) {
  if (c == '\0') return XmlToken::none;
  if (c == '\n') return XmlToken::lineFeed;
  if (c == '\r') return XmlToken::carriageReturn;
  const bool outside = last == XmlToken::none || last == XmlToken::elementEnded;
  if (outside && c == '<' && next != '/') return XmlToken::elementStart;
  if (const XmlTokenType type = InStartTag(last, c)) return type;
  if (InContent(last) && IsAlphaNum(c)) return XmlToken::value;
  if (InContent(last) && c == '<' && next != '/') return XmlToken::childElement;
  if (c == '<' && next == '/') return XmlToken::endTag;
  if (last <= XmlToken::endTag && IsAlphaNum(c)) return XmlToken::endTagName;
  return last <= XmlToken::endTagName && c == '>' ? XmlToken::endTagEnd : XmlToken::none;
}

}  // namespace KELib::Xml
