// SPDX-License-Identifier: MIT
#include "instance/FeedRecords.h"

#include <cstring>
#include <utility>

#include "instance/LinkPartners.h"

namespace KE::Instance {

namespace {

constexpr std::size_t kFirstBuckets = 16;

}  // namespace

// --- the table -----------------------------------------------------------------------------------

std::size_t FeedRecords::Bucket(unsigned int type, const char* key) const {
  const unsigned int hash = KELib::HashText(key, static_cast<unsigned int>(std::strlen(key)));
  return (hash + type) & (buckets.size() - 1);
}

std::size_t FeedRecords::Bucket(const Record& record) const {
  return record.stub != nullptr ? Bucket(*record.stub)
                                : Bucket(static_cast<unsigned int>(record.type), record.key.Text());
}

FeedRecords::Index FeedRecords::Find(const Stub& stub) const {
  if (buckets.empty()) return kNone;
  Index index = buckets[Bucket(stub)];
  while (index != kNone && records[index].stub != &stub) index = records[index].chain;
  return index;
}

FeedRecords::Index FeedRecords::FindGone(unsigned int type, const char* key) const {
  if (gone == 0) return kNone;
  Index index = buckets[Bucket(type, key)];
  for (; index != kNone; index = records[index].chain) {
    const Record& record = records[index];
    if (record.stub == nullptr && record.type == type && std::strcmp(record.key.Text(), key) == 0) {
      break;
    }
  }
  return index;
}

// There is a free record afterwards. When it throws nothing is lost.
void FeedRecords::MakeRoom() {
  if (free != kNone) return;
  if (records.Size() == buckets.size()) GrowBuckets();
  records.Grow();
  free = records.Size() - 1;
}

void FeedRecords::GrowBuckets() {
  std::vector<Index> grown(buckets.empty() ? kFirstBuckets : buckets.size() * 2, kNone);
  buckets.swap(grown);
  for (Index i = 0; i < records.Size(); ++i) {
    if (records[i].used) Enchain(i);
  }
}

void FeedRecords::Enchain(Index index) {
  Index& head = buckets[Bucket(records[index])];
  records[index].chain = std::exchange(head, index);
}

void FeedRecords::Unchain(Index index) {
  Index* link = &buckets[Bucket(records[index])];
  while (*link != index) link = &records[*link].chain;
  *link = records[index].chain;
}

// The record is found by another stub from now on or, without one, by its key.
void FeedRecords::Rehome(Index index, Stub* stub) {
  Unchain(index);
  records[index].stub = stub;
  Enchain(index);
}

void FeedRecords::Free(Index index) {
  Unchain(index);
  records[index] = Record();
  records[index].chain = std::exchange(free, index);
}

// --- the pending entries -------------------------------------------------------------------------

void FeedRecords::Append(Index index) {
  Record& record = records[index];
  record.pending = 1;
  record.place = nextPlace++;
  record.next = kNone;
  record.previous = last;
  (last != kNone ? records[last].next : first) = index;
  last = index;
}

void FeedRecords::Unlink(Index index) {
  Record& record = records[index];
  (record.previous != kNone ? records[record.previous].next : first) = record.next;
  (record.next != kNone ? records[record.next].previous : last) = record.previous;
  record.pending = 0;
}

// --- events --------------------------------------------------------------------------------------

FeedRecords::Index FeedRecords::Add(unsigned int type, const KELib::KEString& key, Stub& stub) {
  Index index = FindGone(type, key.Cstr());
  if (index != kNone) {  // its entry is pending still, and stays at its place
    --gone;
    Rehome(index, &stub);
  } else {
    ShortText text(key.Cstr(), key.Length());
    MakeRoom();
    index = free;
    Record& record = records[index];
    free = record.chain;
    record.stub = &stub;
    record.type = type;
    record.used = 1;
    record.key = std::move(text);
    Enchain(index);
    Append(index);
  }
  ChangePartners(stub);
  return index;
}

FeedRecords::Index FeedRecords::AddOnce(unsigned int type, const KELib::KEString& key, Stub& stub) {
  const Index index = Find(stub);
  return index != kNone ? index : Add(type, key, stub);
}

void FeedRecords::Replace(Stub& old, Stub& stub) {
  const Index index = Find(old);
  if (index == kNone) return;
  if (!records[index].pending) Append(index);
  Rehome(index, &stub);
  ChangePartners(old);
  ChangePartners(stub);
}

void FeedRecords::ChangePartners(Stub& stub) {
  ForEachPartner(stub, [this](const Stub& partner) { Change(partner); });
}

void FeedRecords::Change(const Stub& stub, Index likely) {
  const bool isLikely = likely < records.Size() && records[likely].stub == &stub;
  const Index index = isLikely ? likely : Find(stub);
  if (index != kNone && !records[index].pending) Append(index);
}

void FeedRecords::Remove(Stub& stub) {
  const Index index = Find(stub);
  if (index != kNone) RemoveAt(index);
}

void FeedRecords::RemoveAt(Index index) {
  Stub& stub = *records[index].stub;
  if (records[index].known) {
    if (!records[index].pending) Append(index);
    ++gone;
    Rehome(index, nullptr);
  } else {
    Unlink(index);
    Free(index);
  }
  ChangePartners(stub);
}

void FeedRecords::RemoveAll(unsigned int type) {
  for (Index i = 0; i < records.Size(); ++i) {
    if (records[i].stub != nullptr && records[i].type == type) RemoveAt(i);
  }
}

bool FeedRecords::Give(std::uint64_t end, KEChange& change, unsigned int& type) {
  const Index index = first;
  if (index == kNone || records[index].place >= end) return false;
  Record& record = records[index];
  type = static_cast<unsigned int>(record.type);
  const char* const key = record.key.Text();
  change.key.AssignExact(key, static_cast<unsigned int>(std::strlen(key)));
  Unlink(index);
  if (record.stub == nullptr) {
    change.kind = KEChange::Kind::removed;
    --gone;
    Free(index);
    return true;
  }
  change.kind = record.known ? KEChange::Kind::changed : KEChange::Kind::added;
  record.known = 1;
  return true;
}

}  // namespace KE::Instance
