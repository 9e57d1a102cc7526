// SPDX-License-Identifier: MIT
//
// Writes XML text in one forward pass, element by element.
//
// It keeps no stack: name the element again when closing it. Every element ends with a line feed,
// nothing is indented, no prolog is written. Texts are written exactly as given: escape what needs
// it (xml/XmlEscape.h). Nothing is thrown but std::bad_alloc; a wrong order of calls writes wrong
// XML.
//
// Thread safety: none.
#ifndef KECPP_XML_KEXMLBUFFER_H
#define KECPP_XML_KEXMLBUFFER_H

#include "foundation/KEExport.h"
#include "foundation/KEStringBuffer.h"
#include "xml/XmlTokenState.h"

namespace KELib::Xml {

class KECPP_API KEXmlBuffer : public KEStringBuffer {
 public:
  KEXmlBuffer();

  // Takes the text over (the argument is left empty) and writes on behind it.
  explicit KEXmlBuffer(KEStringBuffer& text);

  // Nothing is written then, and the document starts again.
  void Clear();
  void Reset();  // as Clear, with room for 128 characters
  unsigned int GetBufferLength() const { return Length(); }
  // What is written so far.
  KEStringBuffer& Bufr() { return *this; }

  // Writes "<name", after closing the start tag that is open, if any; and ">".
  void StartAddElementTag(const char* name);
  void ClosePreviousElementTag();

  // Nothing is written when either text is null or empty.
  void AddAttributeNameAndValue(const char* name, const char* value);

  // Declares `uri` as the default namespace (null prefix) or under a prefix.
  void AddNamespace(const char* prefix, const char* uri);
  void AddElementTypeValue(const char* type);

  // A null or empty value becomes the attribute "xsi:nil" = "true".
  void AddElementValue(const char* value);
  void EndAddElementTag(const char* name);

  // Several of the above in a row: start, attribute, namespace, type, value, end.
  void EndAddElementTagAndValue(const char* name, const char* value);
  void AddElementTagAndValue(const char* name, const char* value);
  void AddElementTagAttrAndValue(const char* name, const char* attrName, const char* attrValue,
                                 const char* value);
  void AddElementTagTNSAndValue(const char* name, const char* nsPrefix, const char* nsUri,
                                const char* value);
  void AddElementTagTNSTypeAndValue(const char* name, const char* nsPrefix, const char* nsUri,
                                    const char* type, const char* value);
  void AddElementTagAttrTNSTypeAndValue(const char* name, const char* attrName,
                                        const char* attrValue, const char* nsPrefix,
                                        const char* nsUri, const char* type, const char* value);

 private:
  XmlTokenState state;
};

}  // namespace KELib::Xml

#endif
