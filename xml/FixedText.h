// SPDX-License-Identifier: MIT
//
// Compares short texts word by word and in line. Tags and property paths are one or two dozen
// characters long: memcmp takes longer to begin than to compare them, and on 32-bit processors
// compilers call it even where the length is known when the program is compiled.
#ifndef KECPP_XML_FIXEDTEXT_H
#define KECPP_XML_FIXEDTEXT_H

#include <cstddef>
#include <cstring>
#include <utility>

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

}  // namespace KELib::Xml

#endif
