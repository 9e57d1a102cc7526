// SPDX-License-Identifier: MIT
//
// A structural walk over the text of a KEXmlReader: child by child, never past the element it is
// in.
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
#include "xml/FixedText.h"

namespace KELib::Xml {

class KEXmlReader;

// A piece of the text: a name, an attribute's value, an element's text.
struct XmlSlice {
  const char* text = "";
  unsigned int length = 0;

  template <std::size_t N>
  bool Is(const char (&literal)[N]) const {
    return length == N - 1 && BeginsWith(text, literal);
  }
  bool Is(const char* other, std::size_t n) const {
    return length == n && std::memcmp(text, other, n) == 0;
  }
  bool StartsWith(const char* prefix, std::size_t n) const {
    return length >= n && std::memcmp(text, prefix, n) == 0;
  }
  void CopyTo(KEString& out) const { out.AssignExact(text, length); }

  // The same into the block that `out` has, which is known to hold `room` characters; a new one,
  // and its room, when that is too small. For texts that come and go.
  void CopyTo(KEString& out, unsigned int& room) const {
    if (length == 0) {
      out.Clear();
    } else if (length > room) {
      out.AssignExact(text, length);
      room = length;
    } else {
      std::memcpy(out.Str(), text, length);
      out.Str()[length] = '\0';
    }
  }
};

// Start tags repeat, most of all their attributes: those that were seen are passed by comparing.
// May be kept from text to text; of one thread at a time.
struct KnownTagRests {
  static constexpr unsigned int kLongest = 96;

  struct Rest {
    unsigned int length = 0;
    char text[kLongest];  // what followed the name, with the ">"
  };
  static constexpr unsigned int kRests = 8;

  Rest rests[kRests];
};

class KECPP_API KEXmlCursor {
 public:
  // Starts at the reader's position. `known`, which may be null, outlives the cursor.
  explicit KEXmlCursor(KEXmlReader& reader, KnownTagRests* known = nullptr);

  // Walks on to the next child of the element that the cursor is in (or to the next element of
  // the text, on the top level), past text, comments and sections. True: `name` is the child's and
  // the cursor is in its start tag; pass the child with SkipElement, Text or Enter and Leave.
  // False: the cursor is on the enclosing element's end tag or at the end of the text.
  bool NextChild(XmlSlice& name);

  // Takes the next attribute of the start tag that the cursor is in. False when there is none.
  bool NextAttribute(XmlSlice& name, XmlSlice& value);

  // Moves into the content of the element whose start tag the cursor is in. False for an
  // empty-element tag, which is thereby passed.
  bool Enter();

  // Passes the rest of the content of the element `name` that was entered, and its end tag.
  void Leave(const XmlSlice& name);
  template <std::size_t N>
  void Leave(const char (&name)[N]) {
    Leave(XmlSlice{name, N - 1});
  }

  // Passes the rest of the content of the element `name` that was entered, up to its end tag.
  void LeaveContent(const XmlSlice& name);

  // Passes the element `name` whose start tag the cursor is in, with all its content.
  void SkipElement(const XmlSlice& name);

  // Takes the text of the element `name` whose start tag the cursor is in, without its leading
  // line ends and blanks and without the line ends behind a section, and passes the element. Nested
  // elements are passed over. The slice form serves texts in one piece; where sections or comments
  // split the text, `joined` receives the pieces and the slice points there.
  XmlSlice Text(const XmlSlice& name, KEStringBuffer& joined);

  // True when the element whose start tag the cursor is in has child elements. Does not move.
  bool HasChildElements() const;

  // --- short cuts for the plainest form of markup, in which servers write nearly everything ------
  //
  // They give what the general operations above would give. For any other form they return false
  // and move nothing: the caller takes the general operations then.

  // Passes the tag `markup`, such as "<op>", at the cursor or behind blanks.
  template <std::size_t N>
  bool PassTag(const char (&markup)[N]) {
    const char* const from = SkipBlanks(at);
    if (!StandsAt(from, markup)) return false;
    at = from + N - 1;
    inTag = false;
    return true;
  }

  // The same for a start tag that may have attributes: `open` is its begin, such as "<op".
  template <std::size_t N>
  bool PassStartTag(const char (&open)[N]) {
    const char* from = SkipBlanks(at);
    if (!StandsAt(from, open)) return false;
    from += N - 1;
    if (*from != '>') from = PlainTagEnd(from);
    if (from == nullptr) return false;
    at = from + 1;
    inTag = false;
    return true;
  }

  // Takes the text of an element that is at the cursor or behind blanks and has its text in one
  // piece, and passes the element. `open` is the begin of its start tag, such as "<op", which may
  // have attributes; `close` its end tag.
  template <std::size_t N, std::size_t M>
  bool TakeText(const char (&open)[N], const char (&close)[M], XmlSlice& text) {
    const char* from = SkipBlanks(at);
    if (!StandsAt(from, open)) return false;
    from += N - 1;
    if (*from != '>') from = PlainTagEnd(from);
    return from != nullptr && TakeContent(from + 1, close, text);
  }

  // The same for an element with one attribute, whose value is taken as well: `open` goes up to the
  // opening quote, such as "<obj type=\"".
  template <std::size_t N, std::size_t M>
  bool TakeText(const char (&open)[N], const char (&close)[M], XmlSlice& attribute,
                XmlSlice& text) {
    const char* from = SkipBlanks(at);
    if (!StandsAt(from, open)) return false;
    from += N - 1;
    const char* const quote = Find(from[-1], from);
    if (quote == nullptr || quote[1] != '>' || !TakeContent(quote + 2, close, text)) return false;
    attribute = {from, static_cast<unsigned int>(quote - from)};
    return true;
  }

  // Passes a text that is at the cursor, outside of tags.
  bool PassText(const char* text, std::size_t length) {
    if (Left() < length || !SameMarkup(at, text, length)) return false;
    at += length;
    return true;
  }

  // Takes the text behind `before`, which is at the cursor and ends with a start tag, and passes it
  // and the element's end tag.
  template <std::size_t N>
  bool TakeTextBehind(const char* before, std::size_t length, const char (&close)[N],
                      XmlSlice& text) {
    return Left() >= length && SameMarkup(at, before, length) &&
           TakeContent(at + length, close, text);
  }

  // The same with the tag that follows the element's end tag: `both` is the two, such as
  // "</val></changeSet>".
  template <std::size_t N, std::size_t M>
  bool TakeTextBehind(const char* before, std::size_t length, const char (&close)[N],
                      const char (&both)[M], XmlSlice& text) {
    if (Left() < length || !SameMarkup(at, before, length)) return false;
    const char* const from = SkipBlanks(at + length);
    const char* const stop = FindNear('<', from, end);
    if (stop == nullptr) return false;
    const char* behind = stop + M - 1;
    if (!StandsAt(stop, both)) {
      constexpr std::size_t kFollowing = M - N;
      if (!StandsAt(stop, close)) return false;
      const char* const tag = SkipBlanks(stop + N - 1);
      if (static_cast<std::size_t>(end - tag) < kFollowing ||
          !SameText(tag, both + N - 1, kFollowing)) {
        return false;
      }
      behind = tag + kFollowing;
    }
    text = {from, static_cast<unsigned int>(stop - from)};
    at = behind;
    inTag = false;
    return true;
  }

  // Moves past an enclosing element's end tag when the cursor is on one; `name` is its name.
  bool PassEndTag(XmlSlice& name);

  // True when the cursor is in a start tag, behind the element's name.
  bool InStartTag() const { return inTag; }

  bool AtEnd() const { return at >= end; }
  const char* Position() const { return at; }
  std::size_t Left() const { return static_cast<std::size_t>(end - at); }

  // Moves the reader to the cursor's place.
  void MoveReader() const;

 private:
  static bool IsBlank(char c) {
    return static_cast<unsigned char>(c) <= ' ' &&
           (c == ' ' || c == '\n' || c == '\r' || c == '\t');
  }

  // The text is followed by a NUL, which is no blank.
  static const char* SkipBlanks(const char* from) {
    while (IsBlank(*from)) ++from;
    return from;
  }

  static const char* SkipLineEnds(const char* from) {
    while (*from == '\n' || *from == '\r') ++from;
    return from;
  }
  static const char* SkipLayout(const char* from);

  template <std::size_t N>
  bool StandsAt(const char* from, const char (&markup)[N]) const {
    return static_cast<std::size_t>(end - from) >= N - 1 && BeginsWith(from, markup);
  }

  const char* Find(char c, const char* from) const {
    return static_cast<const char*>(std::memchr(from, c, static_cast<std::size_t>(end - from)));
  }

  template <std::size_t M>
  bool TakeContent(const char* from, const char (&close)[M], XmlSlice& text) {
    from = SkipBlanks(from);
    const char* const stop = FindNear('<', from, end);
    if (stop == nullptr || !StandsAt(stop, close)) return false;
    text = {from, static_cast<unsigned int>(stop - from)};
    at = stop + M - 1;
    inTag = false;
    return true;
  }

  const char* PlainTagEnd(const char* from);
  const char* FindTagEnd(const char* from) const;
  const char* SkipMarkup(const char* from) const;
  XmlSlice NameAt(const char* from) const;
  bool IsSection(const char* from) const;
  bool TextPiece(KEStringBuffer& joined, XmlSlice& whole, bool& behindSection);
  void AppendPiece(KEStringBuffer& joined, XmlSlice& whole, const char* from, const char* to) const;

  KEXmlReader& reader;
  const char* begin;
  const char* end;
  const char* at;
  bool inTag;
  KnownTagRests* known;
};

}  // namespace KELib::Xml

#endif
