// SPDX-License-Identifier: MIT
//
// The list of live iterators that a container keeps, so that it can unbind them when its storage
// changes: a stale iterator then says so instead of reading freed memory.
//
// `It` has a member `It** slot` (the address of its entry here, null while not registered) and an
// operation `Unbind()` that forgets the container.
//
// Thread safety: none; guarded by whatever guards the container. Making, copying and
//   destroying an iterator writes here, so readers hold the container's mutex exclusively.
// Ownership: iterators are not owned; each unregisters itself before it dies.
#ifndef KECPP_FOUNDATION_KEITERATORREGISTRY_H
#define KECPP_FOUNDATION_KEITERATORREGISTRY_H

#include <algorithm>
#include <memory>
#include <new>
#include <utility>

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

  // Registers an iterator that is registered nowhere, in the first free entry. O(log n) amortised
  // in the number of registered iterators.
  void Add(It* iterator) {
    const unsigned int used = Used();
    if (used == capacity) {
      Grow();
    }
    Place(iterator, used);
  }

  // Takes a registered iterator out. The last one moves into its entry, so that the taken entries
  // stay without gaps. O(log n).
  void Remove(It* iterator) {
    const unsigned int last = Used() - 1;
    It** const gap = iterator->slot;
    Place(entries[last], static_cast<unsigned int>(gap - entries.get()));
    entries[last] = nullptr;
    iterator->slot = nullptr;
  }

  // Unbinds every iterator and forgets them all; the room is kept.
  void UnbindAll() {
    for (unsigned int i = 0; i < capacity && entries[i]; ++i) {
      entries[i]->slot = nullptr;
      entries[i]->Unbind();
      entries[i] = nullptr;
    }
  }

 private:
  // The used entries come first, without gaps. They are counted by a search, since there is no room
  // for a third field: containers are embedded in classes whose layout programs were compiled with.
  unsigned int Used() const {
    It* const* const first = entries.get();
    return static_cast<unsigned int>(
        std::partition_point(first, first + capacity, [](It* entry) { return entry != nullptr; }) -
        first);
  }

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
    const unsigned int oldCapacity = std::exchange(capacity, wanted);
    for (unsigned int i = 0; i < oldCapacity; ++i) {
      Place(old[i], i);
    }
  }

  std::unique_ptr<It*[]> entries;  // null until the first registration; null entries are free
  unsigned int capacity = 0;
};

}  // namespace KELib

#endif
