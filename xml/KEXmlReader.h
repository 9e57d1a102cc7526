// SPDX-License-Identifier: MIT
//
// A forward cursor over an XML text in memory. It builds no tree and does not validate: callers ask
// targeted questions at the cursor and move it on. Searches look for a name anywhere behind the
// cursor; where elements may be absent walk with KEXmlCursor instead.
//
// Names are compared by their own characters only: a longer element name that begins with the name
// asked for matches as well. Attribute names are recognised by IsAlphaNum (xml/XmlTokenState.h).
//
// Thread safety: none of its own.
// Ownership: the reader owns its text.
// Errors: a movement throws XmlException where the input is empty or exhausted and for a tag, an
//   attribute or a section without its end. Questions and failed searches return false.
#ifndef KECPP_XML_KEXMLREADER_H
#define KECPP_XML_KEXMLREADER_H

#include "foundation/KEExport.h"
#include "foundation/KEString.h"
#include "xml/XmlTokenState.h"

namespace KELib::Xml {

class KECPP_API KEXmlReader {
 public:
  KEXmlReader() = default;

  // With `copy` false, and in the second form, the text is taken over: the argument is left empty.
  KEXmlReader(KEString& text, bool copy, unsigned int startPos = 0);
  explicit KEXmlReader(KEString& text, unsigned int startPos = 0);

  // Replaces the input; the cursor stands at its start.
  void SetInput(KEString& text, bool copy);

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

  // --- questions at the cursor, which does not move ------------------------------------------------

  bool IsElementTag(const char* name) const;
  bool IsElementEndTag(const char* name) const;
  bool InsideElementTag() const;
  bool IsValueCData() const;
  bool HasComplexContent(const char* name) const;

  // --- movements -----------------------------------------------------------------------------------

  // Moves behind the name of the next start tag `name`. Only the first occurrence of the name is
  // looked at: where it is no start tag the search fails and the cursor stays.
  bool FindElementTag(const char* name);

  // Moves behind the name if the cursor stands on a start tag `name`.
  void SkipElementTag(const char* name);

  // Appends the name of the tag under the cursor and stops on the character behind it.
  void GetElementTag(KEString& name);

  // Takes the next attribute of the start tag that the cursor stands in; leaves the tag when there
  // is none. Outside a start tag nothing happens.
  void GetAttributeNameAndValue(KEString& name, KEString& value);
  void GetElementAttributeNameAndValue(const char* elementName, KEString& name, KEString& value);

  // Takes the element's text, without leading line ends and blanks, and passes its end tag.
  void GetElementValue(const char* elementName, KEString& value);
  bool GetNamedElementValue(const char* elementName, KEString& value);
  void GetCDataValue(const char* elementName, KEString& value);

  // Takes everything between the start tag that the cursor stands in and its end tag, unchanged, and
  // passes the end tag.
  void GetElementContent(const char* elementName, KEString& content);

  void SkipElementStartClose();
  void SkipElementEndTag(const char* name);
  bool FindAndSkipElementEndTag(const char* name);
  void SkipLineEndings();
  void SkipChar(char c);
  void SkipTillChar(char c);
  void GetStringUptilChar(char c, KEString& out);  // appends

  // For the library's own walker: sets the cursor (at most to the end) and the last token type.
  void MoveTo(unsigned int p, XmlTokenType last);

 private:
  char At(unsigned int p) const { return p < length ? input.UnsafeAt(p) : '\0'; }
  bool Matches(unsigned int p, const char* name) const;
  bool Search(const char* name, unsigned int& found) const;
  unsigned int Next(char c) const;
  unsigned int TagEnd() const;
  void CheckLimits();
  void Classify();
  void SkipBlanks();
  void EndElement(unsigned int p);
  void LeaveStartTag();
  void ReadAttribute(KEString& name, KEString& value);

  KEString input;
  unsigned int pos = 0;
  unsigned int length = 0;
  XmlTokenState state;
  bool strict = false;
};

// Searches backwards from `pos` for an end tag. On success `pos` is the position of its "<" and
// `name` its name; otherwise both stay.
KECPP_API bool GetPrevElementEndTag(KEString& text, unsigned int& pos, KEString& name);

// The same for the end tag of one name.
KECPP_API bool BackupToElementEndTag(const char* name, KEString& text, unsigned int& pos);

}  // namespace KELib::Xml

#endif
