// SPDX-License-Identifier: MIT
//
// Compares with a text whose length is known when the program is compiled, word by word and in
// line. Tags are a dozen characters long: on 32-bit processors compilers would call memcmp for
// them, which takes longer to begin than to compare.
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

}  // namespace KELib::Xml

#endif
