// SPDX-License-Identifier: MIT
#include "foundation/MemoryAhead.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstddef>
#include <new>

namespace KELib {

namespace {

// The C library gives memory back to the system when a block of 64 KB or more is freed.
constexpr std::size_t kRoom = 60U << 10;
constexpr std::uintptr_t kPage = 4096;

// Older systems do not know the request: then the pages come one by one, as they would otherwise.
void MakePresent(void* room) {
#ifdef MADV_POPULATE_WRITE
  const std::size_t inFront = kPage - reinterpret_cast<std::uintptr_t>(room) % kPage;
  madvise(static_cast<char*>(room) + inFront, (kRoom - inFront) / kPage * kPage,
          MADV_POPULATE_WRITE);
#else
  static_cast<void>(room);
#endif
}

}  // namespace

void MemoryAhead::AskBehind(std::uintptr_t address) {
  void* const room = ::operator new(kRoom, std::nothrow);
  if (room == nullptr) return;
  MakePresent(room);
  end = std::max(address, reinterpret_cast<std::uintptr_t>(room)) + kRoom;
  ::operator delete(room);
}

}  // namespace KELib
