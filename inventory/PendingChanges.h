// SPDX-License-Identifier: MIT
//
// Changes that a reader has not taken yet: at most one an object, in the order of the first.
//
// `Entry` is Change or FleetChange.
//
// Thread safety: none. Complexity: O(1) a change; memory for what is not taken.
#ifndef KECPP_INVENTORY_PENDINGCHANGES_H
#define KECPP_INVENTORY_PENDINGCHANGES_H

#include <kecpp/fleet.h>
#include <kecpp/inventory.h>

#include <cstddef>
#include <deque>
#include <string>
#include <unordered_map>
#include <vector>

namespace kecpp {

// What is the same for two entries of one object only.
std::string PlaceKey(const Change& change);
std::string PlaceKey(const FleetChange& change);

template <class Entry>
class Pending {
 public:
  // Adds what happened after all that was added before.
  void Add(const Entry& change);

  bool Empty() const { return places.empty(); }

  // The entry of the object that `like` names, null without one.
  const Entry* Find(const Entry& like) const;

  // The oldest entries, at most `max`.
  std::vector<Entry> Take(std::size_t max);

 private:
  struct Slot {
    Entry change;
    bool cancelled;
  };

  void Cancel(Slot& slot);

  std::deque<Slot> slots;
  std::size_t cancelled = 0;  // of the slots
  std::size_t first = 0;      // the number of the first slot; each has its own
  std::unordered_map<std::string, std::size_t> places;  // numbers of slots, by PlaceKey
};

using PendingChanges = Pending<Change>;
using PendingFleetChanges = Pending<FleetChange>;

extern template class Pending<Change>;
extern template class Pending<FleetChange>;

}  // namespace kecpp

#endif
