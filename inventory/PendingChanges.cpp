// SPDX-License-Identifier: MIT
#include "inventory/PendingChanges.h"

#include <utility>

namespace kecpp {

using Type = Change::Type;

std::string PlaceKey(const Change& change) {
  return static_cast<char>('0' + static_cast<int>(change.kind)) + change.key;
}

std::string PlaceKey(const FleetChange& change) {
  const char kind = change.kind ? static_cast<char>('0' + static_cast<int>(*change.kind)) : 's';
  return std::to_string(change.site.size()) + kind + change.site + change.key;
}

template <class Entry>
void Pending<Entry>::Add(const Entry& change) {
  const auto [place, isNew] = places.try_emplace(PlaceKey(change), first + slots.size());
  if (isNew) {
    slots.push_back({change, false});
    return;
  }
  Slot& slot = slots[place->second - first];
  Type& type = slot.change.type;
  if (type == Type::added && change.type == Type::removed) {
    places.erase(place);  // the reader has never heard of it
    Cancel(slot);
  } else if (type == Type::removed && change.type == Type::added) {
    type = Type::changed;
  } else if (type == Type::changed) {
    type = change.type == Type::added ? Type::changed : change.type;
  }
}

// Objects that come and go while nobody reads must not fill the memory.
template <class Entry>
void Pending<Entry>::Cancel(Slot& slot) {
  constexpr std::size_t kFew = 64;
  slot.cancelled = true;
  if (++cancelled <= places.size() + kFew) return;
  std::deque<Slot> kept;
  for (Slot& one : slots) {
    if (one.cancelled) continue;
    places[PlaceKey(one.change)] = first + kept.size();
    kept.push_back(std::move(one));
  }
  slots = std::move(kept);
  cancelled = 0;
}

template <class Entry>
const Entry* Pending<Entry>::Find(const Entry& like) const {
  const auto place = places.find(PlaceKey(like));
  return place == places.end() ? nullptr : &slots[place->second - first].change;
}

template <class Entry>
std::vector<Entry> Pending<Entry>::Take(std::size_t max) {
  std::vector<Entry> taken;
  while (!slots.empty() && (slots.front().cancelled || taken.size() < max)) {
    Slot& slot = slots.front();
    if (slot.cancelled) {
      --cancelled;
    } else {
      places.erase(PlaceKey(slot.change));
      taken.push_back(std::move(slot.change));
    }
    slots.pop_front();
    ++first;
  }
  return taken;
}

template class Pending<Change>;
template class Pending<FleetChange>;

}  // namespace kecpp
