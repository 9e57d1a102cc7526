// SPDX-License-Identifier: MIT
//
// Compares short texts word by word and in line, and searches what is near. Tags and property paths
// are one or two dozen characters long: memcmp takes longer to begin than to compare them, and on
// 32-bit processors compilers call it even where the length is known when the program is compiled.
#ifndef KECPP_XML_FIXEDTEXT_H
#define KECPP_XML_FIXEDTEXT_H

#include <cstddef>
#include <cstring>
#include <utility>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace KELib::Xml {

template <typename Word>
bool SameWord(const char* left, const char* right) {
  Word a, b;
  std::memcpy(&a, left, sizeof(Word));
  std::memcpy(&b, right, sizeof(Word));
  return a == b;
}

// The last word overlaps the one before it.
template <std::size_t Length, std::size_t... Indexes>
bool SameWords(const char* left, const char* right, std::index_sequence<Indexes...>) {
  using Word = std::size_t;
  constexpr std::size_t kLast = Length - sizeof(Word);
  return (SameWord<Word>(left + Indexes * sizeof(Word), right + Indexes * sizeof(Word)) && ...) &&
         SameWord<Word>(left + kLast, right + kLast);
}

// Whether `text` begins with the characters of `literal`; it has at least as many.
template <std::size_t N>
bool BeginsWith(const char* text, const char (&literal)[N]) {
  constexpr std::size_t kLength = N - 1;
  if constexpr (kLength < sizeof(std::size_t)) {
    return std::memcmp(text, literal, kLength) == 0;
  } else {
    return SameWords<kLength>(text, literal,
                              std::make_index_sequence<(kLength - 1) / sizeof(std::size_t)>());
  }
}

// The same for a length that is known only when the program runs; for texts of a few dozen
// characters.
inline bool SameText(const char* left, const char* right, std::size_t length) {
  using Word = std::size_t;
  if (length < sizeof(Word)) {
    for (std::size_t i = 0; i < length; ++i) {
      if (left[i] != right[i]) return false;
    }
    return true;
  }
  const std::size_t last = length - sizeof(Word);
  for (std::size_t i = 0; i < last; i += sizeof(Word)) {
    if (!SameWord<Word>(left + i, right + i)) return false;
  }
  return SameWord<Word>(left + last, right + last);
}

#ifdef __SSE2__
inline __m128i SameBytes(const char* left, const char* right) {
  return _mm_cmpeq_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(left)),
                        _mm_loadu_si128(reinterpret_cast<const __m128i*>(right)));
}

inline bool Same32(const char* left, const char* right) {
  return _mm_movemask_epi8(
             _mm_and_si128(SameBytes(left, right), SameBytes(left + 16, right + 16))) == 0xFFFF;
}
#endif

// The same for texts of any length, of which most have a hundred characters. Where the processor
// family has no SSE2 for certain, the C library may know better.
inline bool SameMarkup(const char* left, const char* right, std::size_t length) {
#ifdef __SSE2__
  if (length < 32) return SameText(left, right, length);
  const std::size_t last = length - 32;
  for (std::size_t i = 0; i < last; i += 32) {
    if (!Same32(left + i, right + i)) return false;
  }
  return Same32(left + last, right + last);
#else
  return std::memcmp(left, right, length) == 0;
#endif
}

// The first `c` at or behind `from`, where it is probably near; null where there is none in front
// of `end`.
inline const char* FindNear(char c, const char* from, const char* end) {
#ifdef __SSE2__
  const __m128i wanted = _mm_set1_epi8(c);
  for (int i = 0; i < 4 && end - from >= 16; ++i, from += 16) {
    const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    const int found = _mm_movemask_epi8(_mm_cmpeq_epi8(block, wanted));
    if (found != 0) return from + __builtin_ctz(static_cast<unsigned int>(found));
  }
#endif
  return static_cast<const char*>(std::memchr(from, c, static_cast<std::size_t>(end - from)));
}

}  // namespace KELib::Xml

#endif
