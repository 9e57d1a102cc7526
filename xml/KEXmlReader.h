// SPDX-License-Identifier: MIT
//
// A forward cursor over an XML text in memory. It builds no tree and does not validate: callers ask
// targeted questions at the cursor and move it on. Searches look for a name anywhere behind the
// cursor; where elements may be absent walk with KEXmlCursor instead.
//
// Names are compared by their own characters only: a longer element name that begins with the name
// asked for matches as well. Attribute names are recognised by IsAlphaNum (xml/XmlTokenState.h).
//
// Thread safety: none.
// Ownership: the reader owns its text.
// Errors: a movement throws XmlException where the input is empty or exhausted and for a tag, an
//   attribute or a section without its end. Questions and failed searches return false.
#ifndef KECPP_XML_KEXMLREADER_H
#define KECPP_XML_KEXMLREADER_H

#include "foundation/KEExport.h"
#include "foundation/KEStringBuffer.h"
#include "xml/XmlEndTags.h"
#include "xml/XmlTokenState.h"

namespace KELib::Xml {

class KECPP_API KEXmlReader {
 public:
  KEXmlReader() = default;

  // With `copy` false, and in the second form, the text is taken over: the argument is left empty.
  KEXmlReader(KEString& text, bool copy, unsigned int startPos);
  KEXmlReader(KEString& text, unsigned int startPos);

  // Replaces the input; the cursor is at its start.
  void SetInput(KEString& text, bool copy);

  // Takes a text over that is known to have that length, and sets the cursor as SetStartPos(0).
  void SetInputOfLength(KEString& text, unsigned int textLength);

  // Moves the cursor; ignored for NPos and where fewer than two characters are left.
  void SetStartPos(unsigned int p);

  // Hands the text out; the reader is empty then.
  void MoveContentTo(KEString& out);

  // In strict mode a section without its end and an end tag with another name are errors.
  void SetStrict(bool on) { strict = on; }

  bool End() const { return length < 3 || pos > length - 3; }  // two characters or fewer are left
  unsigned int GetInputLength() const { return length; }
  const char* Str() const { return input.Cstr(); }
  unsigned int Pos() const { return pos; }
  const XmlTokenState& State() const { return state; }

  // --- questions at the cursor, which does not move ----------------------------------------------

  // Whether a start tag, or an end tag, `name` is here.
  bool IsElementTag(const char* name) const;
  bool IsElementEndTag(const char* name) const;

  bool InsideElementTag() const;  // behind the name of a start tag, before its end
  bool IsValueCData() const;      // on a section of plain characters

  // In a start tag: whether a child element is the first thing in the element. `name` is not read.
  bool HasComplexContent(const char* name) const;

  // --- movements ---------------------------------------------------------------------------------

  // Moves behind the name of the next start tag `name`. Only the first occurrence of the name is
  // looked at: where it is no start tag the search fails and the cursor stays.
  bool FindElementTag(const char* name);

  // Moves behind the name if the cursor is on a start tag `name`.
  void SkipElementTag(const char* name);

  // Appends the name of the tag under the cursor and stops on the character behind it.
  void GetElementTag(KEString& name);

  // Takes the next attribute of the start tag that the cursor is in; leaves the tag when there
  // is none, or none that is recognised. Outside a start tag nothing happens.
  void GetAttributeNameAndValue(KEString& name, KEString& value);
  void GetElementAttributeNameAndValue(const char* elementName, KEString& name, KEString& value);

  // Takes the element's text up to the next markup, or its section, without leading line ends and
  // blanks, and passes the end tag if it follows.
  void GetElementValue(const char* elementName, KEString& value);
  bool GetNamedElementValue(const char* elementName, KEString& value);
  void GetCDataValue(const char* elementName, KEString& value);

  // The same into a buffer, whose length and capacity stay right.
  void GetElementValue(const char* elementName, KEStringBuffer& value) {
    GetElementValue(elementName, KEStringEdit(value).Text());
  }
  bool GetNamedElementValue(const char* elementName, KEStringBuffer& value) {
    return GetNamedElementValue(elementName, KEStringEdit(value).Text());
  }
  void GetCDataValue(const char* elementName, KEStringBuffer& value) {
    GetCDataValue(elementName, KEStringEdit(value).Text());
  }

  // Takes everything between the element's start tag, in which or right behind which the cursor
  // is, and its end tag, unchanged, and passes the end tag. Here `elementName` is the whole
  // name.
  void GetElementContent(const char* elementName, KEString& content);
  void GetElementContent(const char* elementName, KEStringBuffer& content) {
    GetElementContent(elementName, KEStringEdit(content).Text());
  }

  // Leaves the start tag that the cursor is in; outside of one nothing happens.
  void SkipElementStartClose();

  // Passes the end tag that the cursor is on, if it does, and the blanks behind it.
  void SkipElementEndTag(const char* name);

  // Moves behind the next end tag `name`. Only the first occurrence of the name is looked at, as
  // with FindElementTag.
  bool FindAndSkipElementEndTag(const char* name);

  // Pass all line feeds and carriage returns, or all `c`, that follow; up to the next `c`.
  void SkipLineEndings();
  void SkipChar(char c);
  void SkipTillChar(char c);                       // throws where there is none
  void GetStringUptilChar(char c, KEString& out);  // likewise; appends

  // For the library's own walker: sets the cursor (at most to the end) and the last token type.
  void MoveTo(unsigned int p, XmlTokenType last);

 private:
  char At(unsigned int p) const { return p < length ? input.UnsafeAt(p) : '\0'; }
  bool Matches(unsigned int p, const char* name) const;
  bool Search(const char* name, unsigned int& found) const;
  unsigned int Next(char c, unsigned int from) const;
  bool FindTagEnd(unsigned int& found) const;
  void AppendSlice(unsigned int from, unsigned int to, KEString& out) const;
  void CheckLimits();
  void Classify();
  void SkipBlanks();
  void EndElement(unsigned int p);
  bool InStartTag() const;
  void PassStartTag();
  void CloseStartTag();
  void PassEndTag(const char* name);
  void LeaveStartTag();
  void ReadAttribute(KEString& name, KEString& value);

  KEString input;
  unsigned int pos = 0;
  unsigned int length = 0;
  XmlTokenState state;
  bool strict = false;
};

}  // namespace KELib::Xml

#endif
