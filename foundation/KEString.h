// SPDX-License-Identifier: MIT
//
// The one string type: a pointer to an owned, NUL-terminated 8-bit text.
//
// It keeps neither length nor spare room: an object is as small as a pointer, a stored text costs
// exactly its characters, and Length() and every append scan. Build long texts in a KEStringBuffer.
// An embedded NUL ends the text. Texts of 2^31 characters or more throw std::bad_alloc.
//
// Thread safety: none.
// Ownership: the buffer comes from array new and is freed with array delete. Empty strings share
//   one static buffer, which is never written and never freed.
// Self-arguments are allowed everywhere: s = s.Cstr() + 2, s += s, s.Attach(s.Str()).
#ifndef KECPP_FOUNDATION_KESTRING_H
#define KECPP_FOUNDATION_KESTRING_H

#include <cstddef>

#include "foundation/KEExport.h"

namespace KELib {

// The polynomial hash of `length` characters: hash = hash * 31 + character, characters signed,
// arithmetic modulo 2^32. O(length).
KECPP_API unsigned int HashText(const char* text, unsigned int length);

class KECPP_API KEString {
 public:
  // What a search returns that found nothing: 4294967295.
  static const unsigned int NPos;

  KEString() : buffer(SharedEmpty()) {}

  // Room for `n` characters, all NUL, to be filled by the caller through Str().
  explicit KEString(unsigned int n) : buffer(SharedEmpty()) { Init(nullptr, n); }

  // A copy; null gives the empty string.
  KEString(const char* text) : buffer(SharedEmpty()) { Init(text, 0); }  // NOLINT: implicit

  // A copy of the whole text, with room for `length` characters when that is more. It never
  // truncates; AssignExact does.
  KEString(const char* text, unsigned int length) : buffer(SharedEmpty()) { Init(text, length); }

  KEString(const KEString& other) : buffer(SharedEmpty()) { Init(other.buffer, 0); }
  KEString(KEString&& other) noexcept : buffer(other.buffer) { other.buffer = SharedEmpty(); }
  ~KEString() { Free(); }

  KEString& operator=(const KEString& other);
  KEString& operator=(KEString&& other) noexcept;
  KEString& operator=(const char* text);

  // Becomes a copy of exactly `length` characters, none of which is NUL: one allocation.
  void AssignExact(const char* text, unsigned int length);

  // Appends the whole text, whatever `length` says; null and empty texts append nothing.
  void Append(const char* text, unsigned int length = 0);
  void Append(const KEString& text);
  void Append(char c);  // NUL appends nothing
  void Append(bool value);
  void Append(short value);
  void Append(int value);
  void Append(unsigned int value);
  void Append(long long value);
  void Append(unsigned long long value);
  void Append(float value);
  void Append(double value);
  KEString& operator+=(const char* text);
  KEString& operator+=(const KEString& text);

  // As Append, into room that the caller has reserved with Resize. Return the number of characters
  // appended. The text form appends at most `length` characters, 0 meaning all.
  unsigned int UnsafeAppend(const char* text, unsigned int length = 0);
  unsigned int UnsafeAppend(const KEString& text);
  unsigned int UnsafeAppend(char c);
  unsigned int UnsafeAppend(bool value);
  unsigned int UnsafeAppend(short value);
  unsigned int UnsafeAppend(int value);
  unsigned int UnsafeAppend(unsigned int value);
  unsigned int UnsafeAppend(long long value);
  unsigned int UnsafeAppend(unsigned long long value);
  unsigned int UnsafeAppend(float value);
  unsigned int UnsafeAppend(double value);

  // Makes room for `extra` more characters, NUL until written. Returns the length then possible.
  unsigned int Resize(unsigned int extra);

  // A new string with the whole tail from `start` (clamped to the length): `end` (0 or beyond the
  // length: the length) never shortens it, but one below `start` throws std::bad_alloc.
  KEString Substring(unsigned int start, unsigned int end) const;

  // Empties the text; keeps the buffer.
  void Clear() {
    if (!IsShared()) buffer[0] = '\0';
  }

  // Removes the characters from `from` up to, not including, `to` (clamped to the length). Nothing
  // for 0 and 0, for from > to and for `from` beyond the end.
  void Erase(unsigned int from, unsigned int to);

  // Takes the other's buffer over; the argument is left empty.
  void Transfer(KEString& other) {
    if (this == &other) return;
    Adopt(other.buffer);
    other.buffer = SharedEmpty();
  }

  // Owns `text` from now on, which comes from array new. Null and empty texts leave the string
  // empty; an empty buffer stays the caller's.
  void Attach(char* text);

  // Hands the buffer out; the string is empty then. Free it with array delete unless it is empty:
  // then it may be the shared buffer.
  void Detach(char*& out);

  // ASCII letters only. O(length).
  void ToLower();
  void ToUpper();

  bool Empty() const { return buffer[0] == '\0'; }
  unsigned int Length() const;  // O(length)

  // strcmp and strcasecmp; against a null text 0 when this string is empty, else 1.
  int Compare(const char* other) const;
  int Compare(const KEString& other) const { return Compare(other.buffer); }
  int CompareI(const char* other) const;
  int CompareI(const KEString& other) const { return CompareI(other.buffer); }
  bool Equals(const char* other) const { return Compare(other) == 0; }
  bool Equals(const KEString& other) const { return Compare(other.buffer) == 0; }
  bool EqualsI(const char* other) const { return CompareI(other) == 0; }
  bool EqualsI(const KEString& other) const { return CompareI(other.buffer) == 0; }

  // The character at a position; beyond the length the last one, at the length NUL.
  char operator[](unsigned int position) const { return At(position); }
  char At(unsigned int position) const;
  char UnsafeAt(unsigned int position) const { return buffer[position]; }  // unchecked

  // First position at or after `from`, or NPos.
  unsigned int Find(char c, unsigned int from = 0) const;
  unsigned int Find(const char* text, unsigned int from = 0) const;
  unsigned int Find(const KEString& text, unsigned int from = 0) const;

  // The text, never null. What is written through Str() stays within the length.
  const char* Cstr() const { return buffer; }
  char* Str() { return buffer; }

 protected:
  // The one buffer of all empty strings, which nobody writes or frees.
  static char* SharedEmpty() { return const_cast<char*>(&sharedEmpty); }
  bool IsShared() const { return buffer == &sharedEmpty; }

  // A block for `length` characters, which are unset, with a NUL behind them.
  static char* NewText(std::size_t length);

  char* buffer;

 private:
  void Init(const char* text, unsigned int length);
  void Adopt(char* text) {
    Free();
    buffer = text;
  }
  void Free() {
    if (!IsShared()) delete[] buffer;
  }

  static const char sharedEmpty;
};

}  // namespace KELib

#endif
