// SPDX-License-Identifier: MIT
#include "instance/FeedRecords.h"

#include <cstring>
#include <utility>

#include "instance/LinkPartners.h"

namespace KE::Instance {

namespace {

constexpr std::size_t kFirstSlots = 16;

}  // namespace

// --- the table -----------------------------------------------------------------------------------

unsigned int FeedRecords::Home(unsigned int type, const char* key) const {
  return Home(KELib::HashText(key, static_cast<unsigned int>(std::strlen(key))) + type, shift);
}

unsigned int FeedRecords::Home(const Record& record) const {
  return record.stub != nullptr ? Home(record.stub, shift)
                                : Home(static_cast<unsigned int>(record.type), record.key.get());
}

FeedRecords::Index FeedRecords::Find(const Stub& stub) const {
  if (slots.empty()) return kNone;
  for (Index i = Home(&stub, shift); slots[i].key != nullptr; i = After(i)) {
    if (slots[i].stub == &stub) return i;
  }
  return kNone;
}

FeedRecords::Index FeedRecords::FindGone(unsigned int type, const char* key) const {
  if (gone == 0) return kNone;
  for (Index i = Home(type, key); slots[i].key != nullptr; i = After(i)) {
    const Record& record = slots[i];
    if (record.stub == nullptr && record.type == type && std::strcmp(record.key.get(), key) == 0) {
      return i;
    }
  }
  return kNone;
}

// For one more record. When it throws nothing has changed.
void FeedRecords::MakeRoom() {
  if ((used + 1) * 4 <= slots.size() * 3) return;
  std::vector<Record> old(slots.empty() ? kFirstSlots : slots.size() * 2);
  old.swap(slots);
  shift = 32;
  for (std::size_t size = slots.size(); size > 1; size /= 2) --shift;
  const Index oldFirst = std::exchange(first, kNone);
  last = kNone;
  for (Index i = oldFirst; i != kNone;) {
    const Index following = old[i].next;
    const std::uint64_t place = old[i].place;
    const Index index = Put(std::move(old[i]));
    Append(index);
    slots[index].place = place;
    i = following;
  }
  for (Record& record : old) {
    if (record.key != nullptr) Put(std::move(record));
  }
}

// Into the first free slot from its home on.
FeedRecords::Index FeedRecords::Put(Record&& record) {
  Index index = Home(record);
  while (slots[index].key != nullptr) index = After(index);
  slots[index] = std::move(record);
  return index;
}

// The record is found by another stub from now on or, without one, by its key. It may move.
void FeedRecords::Rehome(Index index, Stub* stub) {
  Record moved = std::move(slots[index]);
  moved.stub = stub;
  const Index to = Put(std::move(moved));
  Relink(to);
  if (to != index) CloseGap(index);
}

// A slot has become free: moves those up that a search would no longer reach.
void FeedRecords::CloseGap(Index hole) {
  slots[hole] = Record();
  const Index mask = static_cast<Index>(slots.size()) - 1;
  for (Index i = After(hole); slots[i].key != nullptr; i = After(i)) {
    if (((i - Home(slots[i])) & mask) < ((i - hole) & mask)) continue;
    slots[hole] = std::move(slots[i]);
    Relink(hole);
    slots[i] = Record();
    hole = i;
  }
}

void FeedRecords::Erase(Index index) {
  --used;
  CloseGap(index);
}

// --- the pending entries -------------------------------------------------------------------------

void FeedRecords::Append(Index index) {
  Record& record = slots[index];
  record.pending = 1;
  record.place = nextPlace++;
  record.next = kNone;
  record.previous = last;
  (last != kNone ? slots[last].next : first) = index;
  last = index;
}

void FeedRecords::Unlink(Index index) {
  Record& record = slots[index];
  (record.previous != kNone ? slots[record.previous].next : first) = record.next;
  (record.next != kNone ? slots[record.next].previous : last) = record.previous;
  record.pending = 0;
}

// A record has moved to this slot.
void FeedRecords::Relink(Index index) {
  const Record& record = slots[index];
  if (!record.pending) return;
  (record.previous != kNone ? slots[record.previous].next : first) = index;
  (record.next != kNone ? slots[record.next].previous : last) = index;
}

// --- events --------------------------------------------------------------------------------------

void FeedRecords::Add(unsigned int type, const KELib::KEString& key, Stub& stub) {
  const Index back = FindGone(type, key.Cstr());
  if (back != kNone) {  // its entry is pending still, and stays at its place
    --gone;
    Rehome(back, &stub);
  } else {
    const unsigned int length = key.Length();
    Record record;
    record.stub = &stub;
    record.key.reset(new char[length + 1]);
    std::memcpy(record.key.get(), key.Cstr(), length + 1);
    record.type = type;
    MakeRoom();
    Append(Put(std::move(record)));
    ++used;
  }
  ChangePartners(stub);
}

void FeedRecords::AddOnce(unsigned int type, const KELib::KEString& key, Stub& stub) {
  if (Find(stub) == kNone) Add(type, key, stub);
}

void FeedRecords::Replace(Stub& old, Stub& stub) {
  const Index index = Find(old);
  if (index == kNone) return;
  if (!slots[index].pending) Append(index);
  Rehome(index, &stub);
  ChangePartners(old);
  ChangePartners(stub);
}

void FeedRecords::ChangePartners(Stub& stub) {
  ForEachPartner(stub, [this](const Stub& partner) { Change(partner); });
}

void FeedRecords::Change(const Stub& stub) {
  const Index index = Find(stub);
  if (index != kNone && !slots[index].pending) Append(index);
}

void FeedRecords::Remove(Stub& stub) {
  const Index index = Find(stub);
  if (index != kNone) RemoveAt(index);
}

void FeedRecords::RemoveAt(Index index) {
  Stub& stub = *slots[index].stub;
  if (slots[index].known) {
    if (!slots[index].pending) Append(index);
    ++gone;
    Rehome(index, nullptr);
  } else {
    Unlink(index);
    Erase(index);
  }
  ChangePartners(stub);
}

// Removing moves records up only, so that none is missed.
void FeedRecords::RemoveAll(unsigned int type) {
  for (Index i = 0; i < slots.size();) {
    if (slots[i].stub != nullptr && slots[i].type == type) {
      RemoveAt(i);
    } else {
      ++i;
    }
  }
}

bool FeedRecords::Give(std::uint64_t end, KEChange& change, unsigned int& type) {
  const Index index = first;
  if (index == kNone || slots[index].place >= end) return false;
  Record& record = slots[index];
  type = static_cast<unsigned int>(record.type);
  const auto length = static_cast<unsigned int>(std::strlen(record.key.get()));
  change.key.AssignExact(record.key.get(), length);
  Unlink(index);
  if (record.stub == nullptr) {
    change.kind = KEChange::Kind::removed;
    --gone;
    Erase(index);
    return true;
  }
  change.kind = record.known ? KEChange::Kind::changed : KEChange::Kind::added;
  record.known = 1;
  return true;
}

}  // namespace KE::Instance
