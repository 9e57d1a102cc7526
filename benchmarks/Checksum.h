// SPDX-License-Identifier: MIT
//
// A sum over a store. Contenders with the same sum have done the same work.
#ifndef KECPP_BENCHMARKS_CHECKSUM_H
#define KECPP_BENCHMARKS_CHECKSUM_H

#include <cstdint>
#include <initializer_list>
#include <string_view>

namespace bench {

// The hash of one object: its texts in a fixed order, its status and its partner's key.
inline std::uint64_t HashObject(std::initializer_list<std::string_view> texts,
                                unsigned int status) {
  std::uint64_t hash = 1469598103934665603ULL + status;
  for (const std::string_view text : texts) {
    for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211ULL;
    hash = (hash ^ 0xffU) * 1099511628211ULL;
  }
  return hash ^ (hash >> 29);
}

}  // namespace bench

#endif
