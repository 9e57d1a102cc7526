// SPDX-License-Identifier: MIT
//
// The list of live iterators that a container keeps, so that it can unbind them when its storage
// changes: a stale iterator then says so instead of reading freed memory.
//
// `It` has a member `It** slot` (the address of its entry here, null while not registered) and an
// operation `Unbind()` that forgets the container.
//
// Thread safety: none of its own; guarded by whatever guards the container. Making, copying and
//   destroying an iterator writes here, so readers hold the container's mutex exclusively.
// Ownership: iterators are not owned; each unregisters itself before it dies.
#ifndef KECPP_FOUNDATION_KEITERATORREGISTRY_H
#define KECPP_FOUNDATION_KEITERATORREGISTRY_H

#include <memory>
#include <new>

#include "foundation/KEExport.h"

namespace KELib {

// Entries of a registry when its first iterator comes; it doubles from there.
extern KECPP_API const unsigned int ITARY_START_SIZE;

template <typename It>
class KECPP_API KEIteratorRegistry {
 public:
  KEIteratorRegistry() = default;
  KEIteratorRegistry(const KEIteratorRegistry&) = delete;
  KEIteratorRegistry& operator=(const KEIteratorRegistry&) = delete;

  // Registers an iterator that is registered nowhere, in the first free entry. O(1) amortised.
  void Add(It* iterator) {
    if (used == capacity) {
      Grow();
    }
    Place(iterator, used);
    ++used;
  }

  // Takes a registered iterator out. The last one moves into its entry, so that the taken entries
  // stay without gaps. O(1).
  void Remove(It* iterator) {
    --used;
    It** const gap = iterator->slot;
    Place(entries[used], static_cast<unsigned int>(gap - entries.get()));
    entries[used] = nullptr;
    iterator->slot = nullptr;
  }

  // Unbinds every iterator and forgets them all; the room is kept.
  void UnbindAll() {
    while (used > 0) {
      --used;
      entries[used]->slot = nullptr;
      entries[used]->Unbind();
      entries[used] = nullptr;
    }
  }

 private:
  void Place(It* iterator, unsigned int index) {
    entries[index] = iterator;
    iterator->slot = &entries[index];
  }

  void Grow() {
    const unsigned int wanted = capacity == 0 ? ITARY_START_SIZE : 2 * capacity;
    if (wanted < capacity) {
      throw std::bad_alloc();
    }
    std::unique_ptr<It*[]> old(new It* [wanted] {});
    old.swap(entries);
    capacity = wanted;
    for (unsigned int i = 0; i < used; ++i) {
      Place(old[i], i);
    }
  }

  std::unique_ptr<It*[]> entries;  // null until the first registration; null entries are free
  unsigned int capacity = 0;
  unsigned int used = 0;  // entries below are taken, all others free
};

}  // namespace KELib

#endif
