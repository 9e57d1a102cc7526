// SPDX-License-Identifier: MIT
#include "xml/KEXmlReader.h"

#include <algorithm>
#include <cstring>

#include "xml/KEXmlCursor.h"
#include "xml/XmlConstants.h"
#include "xml/XmlException.h"

namespace KELib::Xml {

namespace {

bool IsBlank(char c) {
  return c == ' ' || c == '\n' || c == '\r' || c == '\t';
}

unsigned int LengthOf(const char* text) {
  return static_cast<unsigned int>(std::strlen(text));
}

}  // namespace

KEXmlReader::KEXmlReader(KEString& text, bool copy, unsigned int startPos) {
  SetInput(text, copy);
  SetStartPos(startPos);
}

KEXmlReader::KEXmlReader(KEString& text, unsigned int startPos)
    : KEXmlReader(text, false, startPos) {}

void KEXmlReader::SetInput(KEString& text, bool copy) {
  if (copy) {
    input = text;
  } else {
    input.Transfer(text);
  }
  pos = 0;
  length = input.Length();
  state.Reset();
}

void KEXmlReader::SetInputOfLength(KEString& text, unsigned int textLength) {
  input.Transfer(text);
  length = textLength;
  pos = 0;
  state.Reset();
  SetStartPos(0);
}

void KEXmlReader::SetStartPos(unsigned int p) {
  if (length < 2 || p >= length - 1) return;
  pos = p;
  Classify();
}

void KEXmlReader::MoveContentTo(KEString& out) {
  out.Transfer(input);
  pos = length = 0;
  state.Reset();
}

void KEXmlReader::MoveTo(unsigned int p, XmlTokenType last) {
  pos = std::min(p, length);
  state.SetLastType(last);
  if (pos < length) Classify();
}

// --- helpers -------------------------------------------------------------------------------------

void KEXmlReader::CheckLimits() {
  ThrowExceptionOnLimits(input, length, pos);
}

// Behind an element's name a line end or a tab separates the attributes just as a blank does.
void KEXmlReader::Classify() {
  char c = At(pos);
  if (state.WasLastType(XmlToken::elementName) && IsBlank(c)) c = ' ';
  state.SetExpectedType(c, At(pos + 1));
}

bool KEXmlReader::Matches(unsigned int p, const char* name) const {
  if (name == nullptr || name[0] == '\0' || p > length) return false;
  const std::size_t size = std::strlen(name);
  return size <= length - p && std::memcmp(input.Cstr() + p, name, size) == 0;
}

bool KEXmlReader::Search(const char* name, unsigned int& found) const {
  if (name == nullptr || name[0] == '\0') return false;
  const void* at = memmem(input.Cstr() + pos, length - pos, name, std::strlen(name));
  if (at == nullptr) return false;
  found = static_cast<unsigned int>(static_cast<const char*>(at) - input.Cstr());
  return true;
}

// The position of the next `c` at or behind `from`.
unsigned int KEXmlReader::Next(char c, unsigned int from) const {
  const void* at = std::memchr(input.Cstr() + from, c, length - from);
  if (at == nullptr) ThrowXmlException(ERR_BAD_ELEM);
  return static_cast<unsigned int>(static_cast<const char*>(at) - input.Cstr());
}

// The ">" of the tag that the cursor is in; one inside an attribute's value does not count.
bool KEXmlReader::FindTagEnd(unsigned int& found) const {
  for (unsigned int p = pos; p < length; ++p) {
    const char c = input.UnsafeAt(p);
    if (c == '>') {
      found = p;
      return true;
    }
    if (c != '"' && c != '\'') continue;
    const void* quote = std::memchr(input.Cstr() + p + 1, c, length - p - 1);
    if (quote == nullptr) return false;
    p = static_cast<unsigned int>(static_cast<const char*>(quote) - input.Cstr());
  }
  return false;
}

// The class alone does not decide: an attribute whose name is not recognised has none.
bool KEXmlReader::InStartTag() const {
  return state.WasLastType(XmlToken::elementName) || state.WasLastType(XmlToken::attribute) ||
         state.IsExpectedTypeRange(XmlToken::inStartTag, XmlToken::emptyElement);
}

// Moves behind the start tag that the cursor is in.
void KEXmlReader::PassStartTag() {
  unsigned int close = 0;
  if (!FindTagEnd(close)) ThrowXmlException(ERR_BAD_ELEM);
  const bool empty = close > 0 && input.UnsafeAt(close - 1) == '/';
  state.SetLastType(empty ? XmlToken::emptyElement : XmlToken::startTagEnd);
  pos = close + 1;
}

void KEXmlReader::AppendSlice(unsigned int from, unsigned int to, KEString& out) const {
  KEString piece;
  piece.AssignExact(input.Cstr() + from, to - from);
  out += piece;
}

void KEXmlReader::SkipBlanks() {
  while (pos < length && IsBlank(input.UnsafeAt(pos))) ++pos;
}

// The position is behind an element that has ended at `p`. The end of the input is no error here:
// the last element of a text can be read.
void KEXmlReader::EndElement(unsigned int p) {
  pos = p;
  SkipBlanks();
  state.SetLastType(XmlToken::elementEnded);
  if (pos < length) Classify();
}

// --- questions -----------------------------------------------------------------------------------

bool KEXmlReader::IsElementTag(const char* name) const {
  return state.IsExpectedType(XmlToken::elementStart) && Matches(pos + 1, name);
}

bool KEXmlReader::IsElementEndTag(const char* name) const {
  return state.IsExpectedType(XmlToken::endTag) && Matches(pos + 2, name);
}

bool KEXmlReader::InsideElementTag() const {
  return state.WasLastType(XmlToken::elementName) &&
         state.IsExpectedTypeRange(XmlToken::elementName, XmlToken::inStartTag);
}

bool KEXmlReader::IsValueCData() const {
  return At(pos) == '<' && At(pos + 1) == '!' && At(pos + 2) == '[';
}

bool KEXmlReader::HasComplexContent(const char*) const {
  unsigned int p = 0;
  if (!state.WasLastType(XmlToken::elementName) || !FindTagEnd(p)) return false;
  if (p > 0 && input.UnsafeAt(p - 1) == '/') return false;
  do {
    ++p;
  } while (p < length && IsBlank(input.UnsafeAt(p)));
  return At(p) == '<' && At(p + 1) != '/' && !Matches(p, CDATA_START_ELEM);
}

// --- tags ----------------------------------------------------------------------------------------

bool KEXmlReader::FindElementTag(const char* name) {
  CheckLimits();
  unsigned int found = 0;
  if (!Search(name, found) || found == 0 || input.UnsafeAt(found - 1) != '<') return false;
  pos = found + LengthOf(name);
  state.SetLastType(XmlToken::elementName);
  Classify();
  return true;
}

void KEXmlReader::SkipElementTag(const char* name) {
  CheckLimits();
  if (!IsElementTag(name)) return;
  pos += 1 + LengthOf(name);
  state.SetLastType(XmlToken::elementName);
  Classify();
  SkipBlanks();
}

void KEXmlReader::GetElementTag(KEString& name) {
  CheckLimits();
  const unsigned int start = At(pos) == '<' ? pos + 1 : pos;
  unsigned int p = start;
  while (p < length && !IsBlank(At(p)) && At(p) != '/' && At(p) != '>') ++p;
  if (p >= length) ThrowXmlException(ERR_BAD_ELEM);
  AppendSlice(start, p, name);
  pos = p;
  state.SetLastType(XmlToken::elementName);
  Classify();
}

void KEXmlReader::SkipElementStartClose() {
  CheckLimits();
  CloseStartTag();
}

void KEXmlReader::CloseStartTag() {
  if (!InStartTag()) return;
  PassStartTag();
  SkipBlanks();
  if (pos < length) Classify();
}

void KEXmlReader::SkipElementEndTag(const char* name) {
  CheckLimits();
  PassEndTag(name);
}

void KEXmlReader::PassEndTag(const char* name) {
  if (At(pos) != '<' || At(pos + 1) != '/') return;
  if (strict && !Matches(pos + 2, name)) ThrowXmlException(ERR_BAD_ELEM);
  EndElement(Next('>', pos) + 1);
}

bool KEXmlReader::FindAndSkipElementEndTag(const char* name) {
  CheckLimits();
  unsigned int found = 0;
  if (!Search(name, found) || found == 0 || input.UnsafeAt(found - 1) != '/') return false;
  pos = found + LengthOf(name);
  EndElement(Next('>', pos) + 1);
  return true;
}

// --- attributes ----------------------------------------------------------------------------------

void KEXmlReader::GetAttributeNameAndValue(KEString& name, KEString& value) {
  const bool inside =
      state.WasLastType(XmlToken::elementName) || state.WasLastType(XmlToken::attribute);
  if (!inside && !input.Empty()) return;
  CheckLimits();
  const bool more = state.IsExpectedType(XmlToken::inStartTag);
  SkipBlanks();
  if (!more || At(pos) == '>' || At(pos) == '/') {
    LeaveStartTag();
  } else if (IsAlphaNum(At(pos))) {
    ReadAttribute(name, value);
  }
  if (pos < length) Classify();
}

void KEXmlReader::LeaveStartTag() {
  if (At(pos) == '/') {
    if (At(pos + 1) != '>') ThrowXmlException(ERR_BAD_ELEM);
    pos += 2;
    state.SetLastType(XmlToken::emptyElement);
  } else {
    PassStartTag();
  }
}

void KEXmlReader::ReadAttribute(KEString& name, KEString& value) {
  unsigned int nameEnd = pos;
  while (nameEnd < length && At(nameEnd) != '=' && At(nameEnd) != '>' && !IsBlank(At(nameEnd))) {
    ++nameEnd;
  }
  const unsigned int nameStart = pos;
  pos = nameEnd;
  SkipBlanks();
  if (At(pos) != '=') ThrowXmlException(ERR_BAD_ELEM);
  ++pos;
  SkipBlanks();
  const char quote = At(pos);
  if (quote != '"' && quote != '\'') ThrowXmlException(ERR_BAD_ELEM);
  const unsigned int valueStart = ++pos;
  pos = Next(quote, pos);
  name.AssignExact(input.Cstr() + nameStart, nameEnd - nameStart);
  value.AssignExact(input.Cstr() + valueStart, pos - valueStart);
  ++pos;
  SkipBlanks();
  state.SetLastType(XmlToken::attribute);
}

void KEXmlReader::GetElementAttributeNameAndValue(const char* elementName, KEString& name,
                                                  KEString& value) {
  if (FindElementTag(elementName)) GetAttributeNameAndValue(name, value);
}

// --- values --------------------------------------------------------------------------------------

void KEXmlReader::GetElementValue(const char* elementName, KEString& value) {
  value.Clear();
  if (!state.WasLastType(XmlToken::emptyElement)) CheckLimits();
  CloseStartTag();
  if (state.WasLastType(XmlToken::emptyElement)) {
    EndElement(pos);
    return;
  }
  SkipBlanks();
  CheckLimits();
  if (Matches(pos, CDATA_START_ELEM)) {
    GetCDataValue(elementName, value);
  } else if (At(pos) != '<') {
    const unsigned int stop = Next('<', pos);
    value.AssignExact(input.Cstr() + pos, stop - pos);
    pos = stop;
    state.SetLastType(XmlToken::value);
    Classify();
  }
  PassEndTag(elementName);
}

bool KEXmlReader::GetNamedElementValue(const char* elementName, KEString& value) {
  if (!FindElementTag(elementName)) return false;
  GetElementValue(elementName, value);
  return true;
}

void KEXmlReader::GetCDataValue(const char* elementName, KEString& value) {
  CheckLimits();
  const unsigned int marker = LengthOf(CDATA_START_ELEM);
  if (length - pos < marker) ThrowXmlException(ERR_BAD_CDATA);
  const unsigned int start = pos + marker;
  pos = start;
  unsigned int stop = 0, behind = 0;
  if (Search(CDATA_END_ELEM, stop)) {
    behind = stop + LengthOf(CDATA_END_ELEM);
  } else if (strict) {
    ThrowXmlException(ERR_BAD_CDATA);
  } else if (Search(elementName, stop)) {
    behind = stop;
  } else {
    ThrowXmlException(ERR_BAD_ELEM);
  }
  value.AssignExact(input.Cstr() + start, stop - start);
  pos = behind;
  state.SetLastType(XmlToken::value);
  while (At(pos) == '\n' || At(pos) == '\r') ++pos;
  if (pos < length) Classify();
}

// The tag may have been left already, by asking for one attribute more than it has.
void KEXmlReader::GetElementContent(const char* elementName, KEString& content) {
  content.Clear();
  if (!state.WasLastType(XmlToken::emptyElement)) CheckLimits();
  if (InStartTag()) PassStartTag();
  if (state.WasLastType(XmlToken::emptyElement)) {
    EndElement(pos);
    return;
  }
  const unsigned int size = elementName != nullptr ? LengthOf(elementName) : 0;
  const unsigned int start = pos;
  state.SetLastType(XmlToken::startTagEnd);
  KEXmlCursor cursor(*this);
  cursor.LeaveContent({elementName, size});
  const unsigned int stop = static_cast<unsigned int>(cursor.Position() - input.Cstr());
  content.AssignExact(input.Cstr() + start, stop - start);
  EndElement(Next('>', stop) + 1);
}

// --- characters ----------------------------------------------------------------------------------

void KEXmlReader::SkipLineEndings() {
  CheckLimits();
  while (At(pos) == '\n' || At(pos) == '\r') ++pos;
}

void KEXmlReader::SkipChar(char c) {
  CheckLimits();
  while (pos < length && At(pos) == c) ++pos;
}

void KEXmlReader::SkipTillChar(char c) {
  CheckLimits();
  pos = Next(c, pos);
}

void KEXmlReader::GetStringUptilChar(char c, KEString& out) {
  CheckLimits();
  const unsigned int stop = Next(c, pos);
  AppendSlice(pos, stop, out);
  pos = stop;
}

}  // namespace KELib::Xml
