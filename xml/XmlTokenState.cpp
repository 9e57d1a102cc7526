// SPDX-License-Identifier: MIT
#include "xml/XmlTokenState.h"

namespace KELib::Xml {

bool IsAlphaNum(char c) {
  return (c > 'a' && c < 'z') || (c > 'A' && c < 'Z') || (c > '0' && c < '9');
}

namespace {

bool InContent(XmlTokenType last) {
  return last <= 5 || last == 13;
}

// The class of a character behind a start tag's name, attribute or end; 0 when it is none of these.
XmlTokenType InStartTag(XmlTokenType last, char c) {
  if (last <= 1 && IsAlphaNum(c)) return 2;
  if (last <= 3 && c == ' ') return 3;
  if (last == 4 && (IsAlphaNum(c) || c == ' ')) return 3;
  if (last <= 4 && c == '>') return 5;
  return last <= 4 && c == '/' ? 6 : 0;
}

}  // namespace

XmlTokenType GetTokenType(XmlTokenType last, char c, char next) {
  if (c == '\0') return 0;
  if (c == '\n') return 13;
  if (c == '\r') return 14;
  if ((last == 0 || last == 13) && c == '<' && next != '/') return 1;
  if (const XmlTokenType type = InStartTag(last, c)) return type;
  if (InContent(last) && IsAlphaNum(c)) return 7;
  if (InContent(last) && c == '<' && next != '/') return 8;
  if (c == '<' && next == '/') return 10;
  if (last <= 10 && IsAlphaNum(c)) return 11;
  return last <= 11 && c == '>' ? 12 : 0;
}

}  // namespace KELib::Xml
