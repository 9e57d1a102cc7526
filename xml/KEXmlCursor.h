// SPDX-License-Identifier: MIT
//
// A structural walk over the text of a KEXmlReader: child by child, never past the element it is in.
//
// The reader's own searches look for a name anywhere behind the cursor. Where an element may be
// absent such a search would find the next object's; and it would cost the rest of the document.
// This walk sees each byte once and allocates nothing but the values that it is asked for.
//
// Thread safety: none. Ownership: borrows the reader's text, which must not change meanwhile.
// Errors: XmlException "Malformed XML. Missing element end." where the text ends inside a tag or an
//   element, or where an end tag does not match its element.
#ifndef KECPP_XML_KEXMLCURSOR_H
#define KECPP_XML_KEXMLCURSOR_H

#include <cstddef>
#include <cstring>

#include "foundation/KEExport.h"
#include "foundation/KEString.h"
#include "foundation/KEStringBuffer.h"

namespace KELib::Xml {

class KEXmlReader;

// A piece of the text: a name, an attribute's value, an element's text.
struct XmlSlice {
  const char* text = "";
  unsigned int length = 0;

  template <std::size_t N>
  bool Is(const char (&literal)[N]) const {
    return length == N - 1 && std::memcmp(text, literal, N - 1) == 0;
  }
  bool Is(const char* other, std::size_t n) const {
    return length == n && std::memcmp(text, other, n) == 0;
  }
  bool StartsWith(const char* prefix, std::size_t n) const {
    return length >= n && std::memcmp(text, prefix, n) == 0;
  }
  void CopyTo(KEString& out) const { out.AssignExact(text, length); }
};

class KECPP_API KEXmlCursor {
 public:
  // Starts where the reader stands.
  explicit KEXmlCursor(KEXmlReader& reader);

  // Walks on to the next child of the element that the cursor stands in (or to the next element of
  // the text, on the top level), past text, comments and sections. True: `name` is the child's and
  // the cursor stands in its start tag; pass the child with SkipElement, Text or Enter and Leave.
  // False: the cursor stands on the enclosing element's end tag or at the end of the text.
  bool NextChild(XmlSlice& name);

  // Takes the next attribute of the start tag that the cursor stands in. False when there is none.
  bool NextAttribute(XmlSlice& name, XmlSlice& value);

  // Moves into the content of the element whose start tag the cursor stands in. False for an
  // empty-element tag, which is thereby passed.
  bool Enter();

  // Passes the rest of the content of the element `name` that was entered, and its end tag.
  void Leave(const XmlSlice& name);

  // Passes the rest of the content of the element `name` that was entered, up to its end tag.
  void LeaveContent(const XmlSlice& name);

  // Passes the element `name` whose start tag the cursor stands in, with all its content.
  void SkipElement(const XmlSlice& name);

  // Takes the text of the element `name` whose start tag the cursor stands in, without its leading
  // line ends and blanks, and passes the element. Nested elements are passed over. The slice form
  // serves texts in one piece; where sections or comments split the text, `joined` receives the
  // pieces and the slice points there.
  XmlSlice Text(const XmlSlice& name, KEStringBuffer& joined);

  // True when the element whose start tag the cursor stands in has child elements. Does not move.
  bool HasChildElements() const;

  // Moves past an enclosing element's end tag when the cursor stands on one; `name` is its name.
  bool PassEndTag(XmlSlice& name);

  // True when the cursor stands in a start tag, behind the element's name.
  bool InStartTag() const { return inTag; }

  bool AtEnd() const { return at >= end; }
  const char* Position() const { return at; }

  // Moves the reader to the cursor's place.
  void MoveReader() const;

 private:
  const char* Find(char c, const char* from) const;
  const char* FindTagEnd(const char* from) const;
  const char* SkipMarkup(const char* from) const;
  XmlSlice NameAt(const char* from) const;
  bool IsSection(const char* from) const;
  bool TextPiece(KEStringBuffer& joined, XmlSlice& whole);
  void AppendPiece(KEStringBuffer& joined, XmlSlice& whole, const char* from, const char* to) const;

  KEXmlReader& reader;
  const char* begin;
  const char* end;
  const char* at;
  bool inTag;
};

}  // namespace KELib::Xml

#endif
