// SPDX-License-Identifier: MIT
//
// What the containers need to know about their elements: how to free, hash and compare them.
//
// The containers call these templates by element type, so a higher layer that brings a new pointer
// key specialises ComputeHash and Equals for it (before any map with that key is used), and a type
// whose deletion takes more than its destructor specialises DeleteVal<T>(T*).
//
// Thread safety: none of these keeps state; the caller guards the elements.
#ifndef KECPP_FOUNDATION_ELEMENTPOLICIES_H
#define KECPP_FOUNDATION_ELEMENTPOLICIES_H

#include <cstring>
#include <type_traits>

#include "foundation/KEExport.h"
#include "foundation/KEString.h"

namespace KELib {

// Frees what an element that is held by value owns besides itself: nothing. The result says
// whether the container may overwrite the element's bytes with zeros: true, except for KEString,
// whose buffer pointer must never become null.
template <typename T>
KECPP_API inline bool DeleteVal(T& /*value*/) {
  return true;
}
template <>
KECPP_API inline bool DeleteVal<KEString>(KEString& /*value*/) {
  return false;
}

// Deletes the object that a pointer element owns, through its virtual destructor where it has one;
// arithmetic types are arrays from array new. Null is left alone. Always true.
template <typename T>
KECPP_API inline bool DeleteVal(T* value) {
  static_assert(sizeof(T) > 0, "the element's type must be complete where it is deleted");
  if constexpr (std::is_arithmetic_v<T>) {
    delete[] value;
  } else {
    delete value;
  }
  return true;
}

// The hash of a key: unsigned int hashes to itself, texts to their polynomial hash (HashText).
// Declared only for other types: a specialisation must exist.
template <typename T>
KECPP_API unsigned int ComputeHash(T& value);

// The hash of the first `length` characters of a text. A KEString ignores `length` and hashes all.
template <typename T>
KECPP_API unsigned int ComputeHash(T& value, unsigned int length);

// Whether two keys are the same: unsigned int by value, texts by case-sensitive comparison (a null
// char* equals nothing). Declared only for other types: a specialisation must exist.
template <typename T>
KECPP_API bool Equals(T& left, T& right);

template <>
KECPP_API inline unsigned int ComputeHash<unsigned int>(unsigned int& value) {
  return value;
}
template <>
KECPP_API inline unsigned int ComputeHash<char*>(char*& text, unsigned int length) {
  return text ? HashText(text, length) : 0;
}
template <>
KECPP_API inline unsigned int ComputeHash<char*>(char*& text) {
  return text ? HashText(text, static_cast<unsigned int>(std::strlen(text))) : 0;
}
template <>
KECPP_API inline unsigned int ComputeHash<KEString>(KEString& text) {
  return HashText(text.Cstr(), text.Length());
}
template <>
KECPP_API inline unsigned int ComputeHash<KEString>(KEString& text, unsigned int /*length*/) {
  return ComputeHash<KEString>(text);
}

template <>
KECPP_API inline bool Equals<unsigned int>(unsigned int& left, unsigned int& right) {
  return left == right;
}
template <>
KECPP_API inline bool Equals<char*>(char*& left, char*& right) {
  return left && right && std::strcmp(left, right) == 0;
}
template <>
KECPP_API inline bool Equals<KEString>(KEString& left, KEString& right) {
  return std::strcmp(left.Cstr(), right.Cstr()) == 0;
}

// Fills `bytes` bytes at `memory` with zeros. Null is allowed when `bytes` is 0.
KECPP_API void SetZero(void* memory, unsigned int bytes);

}  // namespace KELib

#endif
