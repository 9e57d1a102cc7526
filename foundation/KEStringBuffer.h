// SPDX-License-Identifier: MIT
//
// A string for building long texts: it knows its length and keeps spare room.
//
// It grows by what is needed, at least by 128 characters, and Capacity() tells just that; the block
// behind it grows geometrically, so that n characters appended one by one cost O(n).
// Every mutator of KEString is declared anew here: one called on the base class would leave length
// and capacity wrong. A buffer whose text was transferred away through the base is empty again.
//
// Thread safety: none of its own. Ownership: as KEString. Throws std::bad_alloc beyond 2^31 - 1.
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

  // As the string's operations of these names, with length and capacity kept right.
  void AssignExact(const char* text, unsigned int length);
  void Transfer(KEStringBuffer& other);  // the argument is left empty
  void Transfer(KEString& other);        // likewise
  void Attach(char* text);
  void Detach(char*& out);
  void Erase(unsigned int from, unsigned int to);
  void Clear();  // length and capacity are 0 then

  // As the string's. O(1).
  bool Empty() const { return Length() == 0; }
  unsigned int Length() const { return IsShared() ? 0 : length; }
  unsigned int Capacity() const { return IsShared() ? 0 : capacity; }
  char operator[](unsigned int position) const { return At(position); }
  char At(unsigned int position) const;  // NUL at and beyond the length
  char* Str() { return buffer; }

 private:
  void Heal();
  void MeasureText();
  template <typename Value>
  void AppendFormatted(unsigned int room, const char* format, Value value);

  unsigned int length = 0;
  unsigned int capacity = 0;
};

}  // namespace KELib

#endif
