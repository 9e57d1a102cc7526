// SPDX-License-Identifier: MIT
//
// Has the system provide memory for many blocks at once, in front of their allocation. A page fault
// for each page takes nearly twice as long. In threads other than the main one the C library asks
// for page after page by a call besides.
//
// It is a hint: a block is taken from the allocator, its pages are made present, and it is given
// back. The next blocks will probably come from there.
//
// Thread safety: of one thread at a time. Memory: becomes resident early, 60 KB at a time.
#ifndef KECPP_FOUNDATION_MEMORYAHEAD_H
#define KECPP_FOUNDATION_MEMORYAHEAD_H

#include <cstdint>

namespace KELib {

class MemoryAhead {
 public:
  // An object was allocated, one of those that are kept. Only memory above all that was used or
  // asked for before is new to the process.
  void NoteAllocated(const void* object) {
    const auto address = reinterpret_cast<std::uintptr_t>(object);
    if (objects < kFew) {
      ++objects;
    } else if (address >= end) {
      AskBehind(address);
    }
  }

 private:
  static constexpr unsigned int kFew = 64;  // for which nothing is asked

  void AskBehind(std::uintptr_t address);

  unsigned int objects = 0;
  std::uintptr_t end = 0;  // of what was asked for
};

}  // namespace KELib

#endif
