// SPDX-License-Identifier: MIT
#include "xml/KEXmlReader.h"

#include <cstring>

#include "xml/KEXmlCursor.h"
#include "xml/XmlConstants.h"
#include "xml/XmlException.h"

namespace KELib::Xml {

namespace {

constexpr XmlTokenType kElementStart = 1, kElementName = 2, kInStartTag = 3, kAttribute = 4,
                       kStartTagClosed = 5, kEmptyElement = 6, kValue = 7, kEndTag = 10,
                       kElementEnded = 13;

bool IsBlank(char c) { return c == ' ' || c == '\n' || c == '\r' || c == '\t'; }

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

void KEXmlReader::SetStartPos(unsigned int p) {
  if (p == KEString::NPos || length < 2 || p >= length - 1) return;
  pos = p;
  Classify();
}

void KEXmlReader::MoveContentTo(KEString& out) {
  out.Transfer(input);
  pos = length = 0;
  state.Reset();
}

void KEXmlReader::MoveTo(unsigned int p, XmlTokenType last) {
  pos = p < length ? p : length;
  state.SetLastType(last);
  if (pos < length) Classify();
}

// --- helpers ---------------------------------------------------------------------------------------

void KEXmlReader::CheckLimits() { ThrowExceptionOnLimits(input, length, pos); }

// Behind an element's name a line end or a tab separates the attributes just as a blank does.
void KEXmlReader::Classify() {
  char c = At(pos);
  if (state.WasLastType(kElementName) && IsBlank(c)) c = ' ';
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

// The position of the next `c` at or behind the cursor.
unsigned int KEXmlReader::Next(char c) const {
  const void* at = std::memchr(input.Cstr() + pos, c, length - pos);
  if (at == nullptr) ThrowXmlException(ERR_BAD_ELEM);
  return static_cast<unsigned int>(static_cast<const char*>(at) - input.Cstr());
}

// The ">" of the tag that the cursor stands in; one inside an attribute's value does not count.
unsigned int KEXmlReader::TagEnd() const {
  for (unsigned int p = pos; p < length; ++p) {
    const char c = input.UnsafeAt(p);
    if (c == '>') return p;
    if (c != '"' && c != '\'') continue;
    const void* quote = std::memchr(input.Cstr() + p + 1, c, length - p - 1);
    if (quote == nullptr) break;
    p = static_cast<unsigned int>(static_cast<const char*>(quote) - input.Cstr());
  }
  ThrowXmlException(ERR_BAD_ELEM);
}

void KEXmlReader::SkipBlanks() {
  while (pos < length && IsBlank(input.UnsafeAt(pos))) ++pos;
}

// Stands behind an element that has ended at `p`. The end of the input is no error here: the last
// element of a text can be read.
void KEXmlReader::EndElement(unsigned int p) {
  pos = p;
  SkipBlanks();
  state.SetLastType(kElementEnded);
  if (pos < length) Classify();
}

// --- questions -------------------------------------------------------------------------------------

bool KEXmlReader::IsElementTag(const char* name) const {
  return state.IsExpectedType(kElementStart) && Matches(pos + 1, name);
}

bool KEXmlReader::IsElementEndTag(const char* name) const {
  return state.IsExpectedType(kEndTag) && Matches(pos + 2, name);
}

bool KEXmlReader::InsideElementTag() const {
  return state.WasLastType(kElementName) && state.IsExpectedTypeRange(kElementName, kInStartTag);
}

bool KEXmlReader::IsValueCData() const {
  return At(pos) == '<' && At(pos + 1) == '!' && At(pos + 2) == '[';
}

bool KEXmlReader::HasComplexContent(const char*) const {
  if (!state.WasLastType(kElementName) || length - pos < 2) return false;
  unsigned int p = TagEnd();
  if (p > 0 && input.UnsafeAt(p - 1) == '/') return false;
  do {
    ++p;
  } while (p < length && IsBlank(input.UnsafeAt(p)));
  return At(p) == '<' && At(p + 1) != '/' && !Matches(p, CDATA_START_ELEM);
}

// --- tags --------------------------------------------------------------------------------------------

bool KEXmlReader::FindElementTag(const char* name) {
  CheckLimits();
  unsigned int found = 0;
  if (!Search(name, found) || found == 0 || input.UnsafeAt(found - 1) != '<') return false;
  pos = found + static_cast<unsigned int>(std::strlen(name));
  state.SetLastType(kElementName);
  Classify();
  return true;
}

void KEXmlReader::SkipElementTag(const char* name) {
  CheckLimits();
  if (!IsElementTag(name)) return;
  pos += 1 + static_cast<unsigned int>(std::strlen(name));
  state.SetLastType(kElementName);
  Classify();
  SkipBlanks();
}

void KEXmlReader::GetElementTag(KEString& name) {
  CheckLimits();
  if (At(pos) == '<') ++pos;
  unsigned int p = pos;
  while (p < length && !IsBlank(At(p)) && At(p) != '/' && At(p) != '>') ++p;
  if (p >= length) ThrowXmlException(ERR_BAD_ELEM);
  KEString found;
  found.AssignExact(input.Cstr() + pos, p - pos);
  name += found;
  pos = p;
  state.SetLastType(kElementName);
  Classify();
}

void KEXmlReader::SkipElementStartClose() {
  if (!state.IsExpectedTypeRange(kInStartTag, kEmptyElement)) return;
  CheckLimits();
  pos = TagEnd();
  const bool empty = pos > 0 && input.UnsafeAt(pos - 1) == '/';
  state.SetLastType(empty ? kEmptyElement : kStartTagClosed);
  ++pos;
  SkipBlanks();
  if (pos < length) Classify();
}

void KEXmlReader::SkipElementEndTag(const char* name) {
  if (At(pos) != '<' || At(pos + 1) != '/') return;
  CheckLimits();
  if (strict && !Matches(pos + 2, name)) ThrowXmlException(ERR_BAD_ELEM);
  EndElement(Next('>') + 1);
}

bool KEXmlReader::FindAndSkipElementEndTag(const char* name) {
  CheckLimits();
  unsigned int found = 0;
  if (!Search(name, found) || found == 0 || input.UnsafeAt(found - 1) != '/') return false;
  pos = found + static_cast<unsigned int>(std::strlen(name));
  EndElement(Next('>') + 1);
  return true;
}

// --- attributes --------------------------------------------------------------------------------------

void KEXmlReader::GetAttributeNameAndValue(KEString& name, KEString& value) {
  if (!state.WasLastType(kElementName) && !state.WasLastType(kAttribute)) return;
  CheckLimits();
  const bool more = state.IsExpectedType(kInStartTag);
  SkipBlanks();
  if (!more || At(pos) == '>' || At(pos) == '/') {
    LeaveStartTag();
  } else if (IsAlphaNum(At(pos))) {
    ReadAttribute(name, value);
  }
}

void KEXmlReader::LeaveStartTag() {
  if (At(pos) == '/') {
    if (At(pos + 1) != '>') ThrowXmlException(ERR_BAD_ELEM);
    pos += 2;
    state.SetLastType(kEmptyElement);
  } else {
    pos = TagEnd() + 1;
    state.SetLastType(kStartTagClosed);
  }
  if (pos < length) Classify();
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
  pos = Next(quote);
  name.AssignExact(input.Cstr() + nameStart, nameEnd - nameStart);
  value.AssignExact(input.Cstr() + valueStart, pos - valueStart);
  ++pos;
  SkipBlanks();
  state.SetLastType(kAttribute);
  if (pos < length) Classify();
}

void KEXmlReader::GetElementAttributeNameAndValue(const char* elementName, KEString& name,
                                                  KEString& value) {
  if (FindElementTag(elementName)) GetAttributeNameAndValue(name, value);
}

// --- values --------------------------------------------------------------------------------------------

void KEXmlReader::GetElementValue(const char* elementName, KEString& value) {
  value.Clear();
  SkipElementStartClose();
  if (state.WasLastType(kEmptyElement)) {
    EndElement(pos);
    return;
  }
  SkipBlanks();
  CheckLimits();
  if (At(pos) == '<' && At(pos + 1) == '/') {
    SkipElementEndTag(elementName);
    return;
  }
  if (Matches(pos, CDATA_START_ELEM)) {
    GetCDataValue(elementName, value);
  } else if (At(pos) != '<') {
    const unsigned int stop = Next('<');
    value.AssignExact(input.Cstr() + pos, stop - pos);
    pos = stop;
    state.SetLastType(kValue);
    Classify();
  }
  SkipElementEndTag(elementName);
}

bool KEXmlReader::GetNamedElementValue(const char* elementName, KEString& value) {
  if (!FindElementTag(elementName)) return false;
  GetElementValue(elementName, value);
  return true;
}

void KEXmlReader::GetCDataValue(const char* elementName, KEString& value) {
  CheckLimits();
  const unsigned int marker = static_cast<unsigned int>(std::strlen(CDATA_START_ELEM));
  if (length - pos < marker) ThrowXmlException(ERR_BAD_CDATA);
  const unsigned int start = pos + marker;
  pos = start;
  unsigned int stop = 0, behind = 0;
  if (Search(CDATA_END_ELEM, stop)) {
    behind = stop + static_cast<unsigned int>(std::strlen(CDATA_END_ELEM));
  } else if (strict) {
    ThrowXmlException(ERR_BAD_CDATA);
  } else if (Search(elementName, stop)) {
    behind = stop;
  } else {
    ThrowXmlException(ERR_BAD_ELEM);
  }
  value.AssignExact(input.Cstr() + start, stop - start);
  pos = behind;
  state.SetLastType(kValue);
  while (At(pos) == '\n' || At(pos) == '\r') ++pos;
  if (pos < length) Classify();
}

void KEXmlReader::GetElementContent(const char* elementName, KEString& content) {
  content.Clear();
  if (pos > 0 && state.WasLastType(kEmptyElement)) {
    EndElement(pos);
    return;
  }
  const XmlSlice name{elementName, static_cast<unsigned int>(std::strlen(elementName))};
  KEXmlCursor cursor(*this);
  if (cursor.Enter()) {
    const char* start = cursor.Position();
    cursor.LeaveContent(name);
    content.AssignExact(start, static_cast<unsigned int>(cursor.Position() - start));
    XmlSlice ended;
    cursor.PassEndTag(ended);
  }
  EndElement(static_cast<unsigned int>(cursor.Position() - input.Cstr()));
}

// --- characters ----------------------------------------------------------------------------------------

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
  pos = Next(c);
}

void KEXmlReader::GetStringUptilChar(char c, KEString& out) {
  CheckLimits();
  const unsigned int stop = Next(c);
  KEString found;
  found.AssignExact(input.Cstr() + pos, stop - pos);
  out += found;
  pos = stop;
}

// --- searching backwards -------------------------------------------------------------------------------

bool GetPrevElementEndTag(KEString& text, unsigned int& pos, KEString& name) {
  const unsigned int length = text.Length();
  const char* const start = text.Cstr();
  for (unsigned int p = pos < length ? pos : length; p-- > 0;) {
    if (start[p] != '<' || start[p + 1] != '/') continue;
    const std::size_t size = std::strcspn(start + p + 2, " \t\r\n>");
    name.AssignExact(start + p + 2, static_cast<unsigned int>(size));
    pos = p;
    return true;
  }
  return false;
}

bool BackupToElementEndTag(const char* name, KEString& text, unsigned int& pos) {
  KEString found;
  unsigned int p = pos;
  while (GetPrevElementEndTag(text, p, found)) {
    if (!found.Equals(name)) continue;
    pos = p;
    return true;
  }
  return false;
}

}  // namespace KELib::Xml
