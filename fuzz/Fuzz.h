// SPDX-License-Identifier: MIT
//
// What the fuzz targets share: how an input is cut up, and how an invariant is checked.
//
// Every target defines LLVMFuzzerTestOneInput. A check that fails aborts, so that the fuzzer keeps
// the input. Time that is not linear shows as a time-out: the inputs are up to 64 KB long, and one
// that takes seconds was gone through far more than once.
#ifndef KECPP_FUZZ_FUZZ_H
#define KECPP_FUZZ_FUZZ_H

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "foundation/KEString.h"
#include "support/CapturedLog.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

#define FUZZ_CHECK(condition)                                                             \
  do {                                                                                    \
    if (!(condition)) {                                                                   \
      std::fprintf(stderr, "%s:%d: does not hold: %s\n", __FILE__, __LINE__, #condition); \
      std::abort();                                                                       \
    }                                                                                     \
  } while (false)

namespace fuzz {

// The input, taken piece by piece from its front.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size)
      : text(reinterpret_cast<const char*>(data), size) {
    CapturedLog::Clear();
  }

  // The next byte; 0 when there is none.
  unsigned char Byte() { return at < text.size() ? static_cast<unsigned char>(text[at++]) : 0; }

  // Up to `separator`, or to the end.
  std::string Until(char separator) {
    const std::size_t end = text.find(separator, at);
    std::string piece = text.substr(at, end == std::string::npos ? end : end - at);
    at = end == std::string::npos ? text.size() : end + 1;
    return piece;
  }

  // What is left. Texts of the library end at the first NUL, and so does this one.
  std::string Rest() { return std::string(text.substr(at).c_str()); }

  bool Empty() const { return at >= text.size(); }

 private:
  const std::string text;
  std::size_t at = 0;
};

inline bool Contains(const std::string& text, const char* piece) {
  return text.find(piece) != std::string::npos;
}

}  // namespace fuzz

#endif
