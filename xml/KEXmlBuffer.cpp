// SPDX-License-Identifier: MIT
#include "xml/KEXmlBuffer.h"

#include <cstring>

#include "foundation/KEConstants.h"
#include "xml/XmlConstants.h"

namespace KELib::Xml {

namespace {

// Token types (xml/XmlTokenState.h).
constexpr XmlTokenType kElementStart = 1, kElementName = 2, kInStartTag = 3, kAttribute = 4,
                       kStartTagClosed = 5, kNil = 6, kValue = 7, kEndTagName = 11,
                       kElementEnded = 13, kLineEnd = 14;

unsigned int LengthOf(const char* text) {
  return text != nullptr ? static_cast<unsigned int>(std::strlen(text)) : 0;
}

}  // namespace

KEXmlBuffer::KEXmlBuffer() : KEStringBuffer(BUFFER_GROW_SIZE) {}

KEXmlBuffer::KEXmlBuffer(KEStringBuffer& text) {
  Transfer(text);
}

void KEXmlBuffer::Clear() {
  KEStringBuffer::Clear();
  state.Reset();
}

void KEXmlBuffer::Reset() {
  Clear();
  Resize(BUFFER_GROW_SIZE);
}

void KEXmlBuffer::StartAddElementTag(const char* name) {
  state.SetExpectedType(kElementName);
  const bool nothingOpen = state.WasLastType(0) || state.WasLastTypeRange(kElementEnded, kLineEnd);
  if (!nothingOpen) ClosePreviousElementTag();
  Resize(LengthOf(name) + 1);
  Append(OPEN_ELEM);
  Append(name);
  state.SetLastType(kElementName);
  state.SetExpectedType(kInStartTag);
}

void KEXmlBuffer::ClosePreviousElementTag() {
  Resize(2);
  Append(CLOSE_ELEM);
  state.SetLastType(kStartTagClosed);
  if (state.IsExpectedTypeRange(kElementStart, kElementName)) {
    Append(NEWLINE);
    state.SetLastType(kElementEnded);
  }
}

void KEXmlBuffer::AddAttributeNameAndValue(const char* name, const char* value) {
  if (LengthOf(name) == 0 || LengthOf(value) == 0) return;
  Resize(LengthOf(name) + LengthOf(value) + 4);
  Append(WHITESPACE);
  Append(name);
  Append(EQUALS);
  Append(DBL_QUOTE);
  Append(value);
  Append(DBL_QUOTE);
  state.SetLastType(kAttribute);
  state.SetExpectedType(kInStartTag);
}

void KEXmlBuffer::AddNamespace(const char* prefix, const char* uri) {
  KEString name(XML_nsAttrName);
  if (prefix != nullptr) {
    name.Append(SINGLE_COLON);
    name += prefix;
  }
  AddAttributeNameAndValue(name.Cstr(), uri);
}

void KEXmlBuffer::AddElementTypeValue(const char* type) {
  AddAttributeNameAndValue(XML_xsiType, type);
}

void KEXmlBuffer::AddElementValue(const char* value) {
  if (LengthOf(value) == 0) {
    AddAttributeNameAndValue(XML_xsiNil, STR_BOOLEAN_TRUE);
    state.SetExpectedType(kNil);
    return;
  }
  ClosePreviousElementTag();
  Append(value);
  state.SetLastType(kValue);
  state.SetExpectedType(kEndTagName);
}

void KEXmlBuffer::EndAddElementTag(const char* name) {
  Resize(LengthOf(name) + 4);
  if (state.WasLastType(kValue) || state.WasLastType(kElementEnded)) {
    Append(END_TOKEN);
    Append(name);
    Append(CLOSE_ELEM);
  } else {
    Append(NULL_END_TOKEN);
  }
  Append(NEWLINE);
  state.SetLastType(kElementEnded);
  state.SetExpectedType(kElementName);
}

void KEXmlBuffer::EndAddElementTagAndValue(const char* name, const char* value) {
  AddElementValue(value);
  EndAddElementTag(name);
}

void KEXmlBuffer::AddElementTagAndValue(const char* name, const char* value) {
  StartAddElementTag(name);
  EndAddElementTagAndValue(name, value);
}

void KEXmlBuffer::AddElementTagAttrAndValue(const char* name, const char* attrName,
                                            const char* attrValue, const char* value) {
  StartAddElementTag(name);
  AddAttributeNameAndValue(attrName, attrValue);
  EndAddElementTagAndValue(name, value);
}

void KEXmlBuffer::AddElementTagTNSAndValue(const char* name, const char* nsPrefix,
                                           const char* nsUri, const char* value) {
  StartAddElementTag(name);
  AddNamespace(nsPrefix, nsUri);
  EndAddElementTagAndValue(name, value);
}

void KEXmlBuffer::AddElementTagTNSTypeAndValue(const char* name, const char* nsPrefix,
                                               const char* nsUri, const char* type,
                                               const char* value) {
  StartAddElementTag(name);
  AddNamespace(nsPrefix, nsUri);
  AddElementTypeValue(type);
  EndAddElementTagAndValue(name, value);
}

void KEXmlBuffer::AddElementTagAttrTNSTypeAndValue(const char* name, const char* attrName,
                                                   const char* attrValue, const char* nsPrefix,
                                                   const char* nsUri, const char* type,
                                                   const char* value) {
  StartAddElementTag(name);
  AddAttributeNameAndValue(attrName, attrValue);
  AddNamespace(nsPrefix, nsUri);
  AddElementTypeValue(type);
  EndAddElementTagAndValue(name, value);
}

}  // namespace KELib::Xml
