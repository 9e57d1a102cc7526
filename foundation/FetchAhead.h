// SPDX-License-Identifier: MIT
//
// Asks the memory for what will be read soon: a hint to the processor, which never fails. In large
// inventories nearly all time is waiting for memory.
#ifndef KECPP_FOUNDATION_FETCHAHEAD_H
#define KECPP_FOUNDATION_FETCHAHEAD_H

#include <cstddef>

namespace KELib {

// GCC takes a function that does nothing but fetch for one without effect, and drops the calls.
#define KECPP_FETCHES __attribute__((always_inline)) inline

// Fetches so many cache lines, the first of which has the byte at `begin`.
template <std::size_t kLines>
KECPP_FETCHES void FetchAhead(const void* begin) {
  constexpr std::size_t kCacheLine = 64;
  const char* const at = static_cast<const char*>(begin);
  for (std::size_t i = 0; i < kLines; ++i) __builtin_prefetch(at + i * kCacheLine);
}

}  // namespace KELib

#endif
