// SPDX-License-Identifier: MIT
//
// Changes that a reader has not taken yet: at most one an object, in the order of the first.
//
// Thread safety: none. Complexity: O(1) a change; memory for what is not taken.
#ifndef KECPP_INVENTORY_PENDINGCHANGES_H
#define KECPP_INVENTORY_PENDINGCHANGES_H

#include <kecpp/inventory.h>

#include <cstddef>
#include <deque>
#include <string>
#include <unordered_map>
#include <vector>

namespace kecpp {

class PendingChanges {
 public:
  // Adds what happened after all that was added before.
  void Add(const Change& change);

  bool Empty() const { return places.empty(); }

  // The entry of the object, null without one.
  const Change* Find(Kind kind, const std::string& key) const;

  // The oldest entries, at most `max`.
  std::vector<Change> Take(std::size_t max);

 private:
  struct Slot {
    Change change;
    bool taken;  // or cancelled
  };

  std::deque<Slot> slots;
  std::size_t first = 0;  // the number of the first slot; each has its own
  std::unordered_map<std::string, std::size_t> places;  // numbers of slots, by kind and key
};

}  // namespace kecpp

#endif
