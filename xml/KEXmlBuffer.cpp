// SPDX-License-Identifier: MIT
#include "xml/KEXmlBuffer.h"

#include <cstring>

#include "foundation/KEConstants.h"
#include "xml/XmlConstants.h"

namespace KELib::Xml {

namespace {

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
  state.SetExpectedType(XmlToken::elementName);
  const bool nothingOpen = state.WasLastType(XmlToken::none) ||
                           state.WasLastTypeRange(XmlToken::elementEnded, XmlToken::carriageReturn);
  if (!nothingOpen) ClosePreviousElementTag();
  Resize(LengthOf(name) + 1);
  Append(OPEN_ELEM);
  Append(name);
  state.SetLastType(XmlToken::elementName);
  state.SetExpectedType(XmlToken::inStartTag);
}

void KEXmlBuffer::ClosePreviousElementTag() {
  Resize(2);
  Append(CLOSE_ELEM);
  state.SetLastType(XmlToken::startTagEnd);
  if (state.IsExpectedTypeRange(XmlToken::elementStart, XmlToken::elementName)) {
    Append(NEWLINE);
    state.SetLastType(XmlToken::elementEnded);
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
  state.SetLastType(XmlToken::attribute);
  state.SetExpectedType(XmlToken::inStartTag);
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
    state.SetExpectedType(XmlToken::emptyElement);
    return;
  }
  ClosePreviousElementTag();
  Append(value);
  state.SetLastType(XmlToken::value);
  state.SetExpectedType(XmlToken::endTagName);
}

void KEXmlBuffer::EndAddElementTag(const char* name) {
  Resize(LengthOf(name) + 4);
  if (state.WasLastType(XmlToken::value) || state.WasLastType(XmlToken::elementEnded)) {
    Append(END_TOKEN);
    Append(name);
    Append(CLOSE_ELEM);
  } else {
    Append(NULL_END_TOKEN);
  }
  Append(NEWLINE);
  state.SetLastType(XmlToken::elementEnded);
  state.SetExpectedType(XmlToken::elementName);
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
