// SPDX-License-Identifier: MIT
//
// An array that grows without moving its elements: each of its blocks has room for twice as many
// as the one before it, and is filled before the next one is made.
//
// Thread safety: none; see Shadow for what may be done without the caller's lock.
#ifndef KECPP_INSTANCE_STABLEARRAY_H
#define KECPP_INSTANCE_STABLEARRAY_H

#include <array>
#include <atomic>
#include <cstdint>
#include <new>
#include <vector>

namespace KE::Instance {

template <typename Element>
class StableArray {
 public:
  using Index = unsigned int;

  static constexpr Index kFirst = 1024;  // elements in the first block
  static constexpr unsigned int kBlocks = 22;

  Element& operator[](Index index) { return blocks[BlockOf(index)][PlaceIn(index)]; }
  const Element& operator[](Index index) const { return blocks[BlockOf(index)][PlaceIn(index)]; }
  Index Size() const { return size; }

  // Appends an element. O(1). When it throws (std::bad_alloc) nothing has changed.
  void Grow() {
    const unsigned int block = BlockOf(size);
    if (block >= kBlocks) throw std::bad_alloc();
    if (PlaceIn(size) == 0) blocks[block].reserve(kFirst << block);
    blocks[block].emplace_back();
    ++size;
  }

  // Remembers where the blocks of an array are, so that an element can be brought closer to the
  // processor by a thread that does not hold the array's lock. Nothing is read there: the array may
  // have grown since, or be gone.
  class Shadow {
   public:
    // With the array's lock. O(1) unless a block is new.
    void Follow(const StableArray& array) {
      const unsigned int now = array.size == 0 ? 0 : BlockOf(array.size - 1) + 1;
      for (; known < now; ++known) {
        begins[known].store(reinterpret_cast<std::uintptr_t>(array.blocks[known].data()),
                            std::memory_order_relaxed);
      }
    }

    // With the array's lock: another array is followed from now on.
    void Forget() { known = 0; }

    void Prefetch(Index index) const {
      const unsigned int block = BlockOf(index);
      if (block >= kBlocks) return;
      const std::uintptr_t begin = begins[block].load(std::memory_order_relaxed);
      const std::uintptr_t element = begin + PlaceIn(index) * sizeof(Element);
      // NOLINTBEGIN(performance-no-int-to-ptr): a pointer into what is gone is undefined
      __builtin_prefetch(reinterpret_cast<void*>(element), 1);
      __builtin_prefetch(reinterpret_cast<void*>(element + sizeof(Element) / 2), 1);
      // NOLINTEND(performance-no-int-to-ptr)
    }

   private:
    std::array<std::atomic<std::uintptr_t>, kBlocks> begins{};
    unsigned int known = 0;
  };

 private:
  // Counted from kFirst, an index begins with the bit of its block.
  static unsigned int BlockOf(Index index) {
    return index < ~0U - kFirst ? 21U - static_cast<unsigned int>(__builtin_clz(index + kFirst))
                                : kBlocks;
  }
  static Index PlaceIn(Index index) {
    const Index counted = index + kFirst;
    return counted ^ (0x80000000U >> __builtin_clz(counted));
  }

  std::array<std::vector<Element>, kBlocks> blocks;
  Index size = 0;
};

}  // namespace KE::Instance

#endif
