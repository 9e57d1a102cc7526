// SPDX-License-Identifier: MIT
//
// A string for building long texts: it knows its length and keeps spare room.
//
// It grows by what is needed, at least by 128 characters, and Capacity() is just that; the block
// behind it grows geometrically, so that n characters appended one by one cost O(n).
//
// Every mutator of KEString is declared again here, and operations that replace a string's text
// take a buffer as well (KEFile::Read, GetConfigValue, EscapeText ...; KEStringEdit for others),
// so that length and capacity stay right. A buffer may also be handed over as KEString&: such an
// operation knows nothing of the two fields, so every operation here compares them with the block
// first and measures the text again where they cannot be true. What this net misses:
//   - a NUL that was written into the middle of the text through Str();
//   - a text that came with its block through KEString::Transfer or Attach and happens to have its
//     old contents' end where this text ended;
//   - most replaced blocks in programs with their own operator new, where nobody knows how large
//     a block is. A text that became empty, or is no longer empty, is noticed there as well.
//
// Thread safety: none. Ownership: as KEString. Throws std::bad_alloc beyond 2^31 - 1.
#ifndef KECPP_FOUNDATION_KESTRINGBUFFER_H
#define KECPP_FOUNDATION_KESTRINGBUFFER_H

#include "foundation/KEExport.h"
#include "foundation/KEString.h"

namespace KELib {

class KECPP_API KEStringBuffer : public KEString {
 public:
  // Empty, with room for `capacity` characters, at least 128.
  explicit KEStringBuffer(unsigned int capacity = 0);

  // Takes the text over (the argument is left empty) with room for `capacity` more characters.
  KEStringBuffer(KEString& text, unsigned int capacity);

  KEStringBuffer(const KEStringBuffer& other);
  KEStringBuffer& operator=(const KEStringBuffer& other);
  KEStringBuffer& operator=(const KEString& text);
  KEStringBuffer& operator=(const char* text);

  // Makes room for `needed` more characters, NUL until written. Returns the capacity.
  unsigned int Resize(unsigned int needed);

  // `length` 0 means the whole text, otherwise at most that many characters.
  void Append(const char* text, unsigned int length = 0);
  void Append(const KEString& text);
  void Append(char c);
  void Append(bool value);
  void Append(short value);
  void Append(int value);
  void Append(unsigned int value);
  void Append(long long value);
  void Append(unsigned long long value);
  void Append(float value);
  void Append(double value);
  KEStringBuffer& operator+=(const char* text);
  KEStringBuffer& operator+=(const KEString& text);

  // As Append, which always knows its room. Return the number of characters appended.
  unsigned int UnsafeAppend(const char* text, unsigned int length = 0);
  template <typename Value>
  unsigned int UnsafeAppend(const Value& value) {
    const unsigned int before = Length();
    Append(value);
    return Length() - before;
  }

  // As the string's operations of these names.
  void AssignExact(const char* text, unsigned int length);
  void Transfer(KEStringBuffer& other);  // the argument is left empty
  void Transfer(KEString& other);        // likewise
  void Attach(char* text);
  void Detach(char*& out);
  void Erase(unsigned int from, unsigned int to);
  void Clear();  // length and capacity are 0 then

  // As the string's. O(1).
  bool Empty() const { return Length() == 0; }
  unsigned int Length() const;
  unsigned int Capacity() const;
  char operator[](unsigned int position) const { return At(position); }
  char At(unsigned int position) const;  // NUL at and beyond the length
  char* Str() { return buffer; }

 private:
  bool FieldsHold() const;
  void Heal();
  void MeasureText();
  template <typename Value>
  void AppendFormatted(unsigned int room, const char* format, Value value);

  unsigned int length = 0;
  unsigned int capacity = 0;
};

// A buffer's text as a plain string, as long as this object lives: for operations that know no
// buffer. It gives the text back with length and capacity right, also after an exception. Meanwhile
// the buffer is empty.
class KECPP_API KEStringEdit {
 public:
  // Takes the buffer's text over. The buffer outlives this object.
  explicit KEStringEdit(KEStringBuffer& buffer) : owner(buffer) { text.Transfer(owner); }
  KEStringEdit(const KEStringEdit&) = delete;
  KEStringEdit& operator=(const KEStringEdit&) = delete;
  ~KEStringEdit() { owner.Transfer(text); }

  // The text, to be read and changed.
  KEString& Text() { return text; }

 private:
  KEStringBuffer& owner;
  KEString text;
};

}  // namespace KELib

#endif
