// SPDX-License-Identifier: MIT
#include "inventory/PendingChanges.h"

#include <utility>

namespace kecpp {
namespace {

using Type = Change::Type;

std::string PlaceKey(Kind kind, const std::string& key) {
  return static_cast<char>('0' + static_cast<int>(kind)) + key;
}

}  // namespace

void PendingChanges::Add(const Change& change) {
  const auto [place, isNew] =
      places.try_emplace(PlaceKey(change.kind, change.key), first + slots.size());
  if (isNew) {
    slots.push_back({change, false});
    return;
  }
  Slot& slot = slots[place->second - first];
  Type& type = slot.change.type;
  if (type == Type::added && change.type == Type::removed) {
    slot.taken = true;  // the reader has never heard of it
    places.erase(place);
  } else if (type == Type::removed && change.type == Type::added) {
    type = Type::changed;
  } else if (type == Type::changed) {
    type = change.type == Type::added ? Type::changed : change.type;
  }
}

const Change* PendingChanges::Find(Kind kind, const std::string& key) const {
  const auto place = places.find(PlaceKey(kind, key));
  return place == places.end() ? nullptr : &slots[place->second - first].change;
}

std::vector<Change> PendingChanges::Take(std::size_t max) {
  std::vector<Change> taken;
  while (!slots.empty() && (slots.front().taken || taken.size() < max)) {
    Slot& slot = slots.front();
    if (!slot.taken) {
      places.erase(PlaceKey(slot.change.kind, slot.change.key));
      taken.push_back(std::move(slot.change));
    }
    slots.pop_front();
    ++first;
  }
  return taken;
}

}  // namespace kecpp
