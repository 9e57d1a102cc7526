// SPDX-License-Identifier: MIT
//
// What one feed knows of each object, and the entries that it has not given yet.
//
// An object has one record: whether the feed has given it (`known`), whether it is cached (`stub`),
// and whether an entry is pending. What kind of entry that is follows from the first two when it is
// given. So entries coalesce by themselves, and an object that is neither known nor cached has no
// record. Those to which an object is linked that comes or goes change.
//
// The records are in blocks that never move, in the order in which their objects came, and the
// pending entries are a list through them. A hash table finds them: that of a cached object by the
// address of its stub, so that a change costs no hashing of text; that of an object that has gone
// by class and key, which is asked only when something is added while there are such records.
//
// Stubs that are filed one after the other mostly follow each other in memory, and so do their
// buckets: a fill walks through records and buckets in order, and waits for memory rarely.
//
// Complexity: O(1) amortised, and the links of an object that comes or goes.
// Memory: Add alone needs some. A change or a removal cannot fail.
// Thread safety: guarded by the hub's mutex.
#ifndef KECPP_INSTANCE_FEEDRECORDS_H
#define KECPP_INSTANCE_FEEDRECORDS_H

#include <cstdint>
#include <vector>

#include "foundation/KEString.h"
#include "instance/KEChangeFeed.h"
#include "instance/ShortText.h"
#include "instance/StableArray.h"
#include "stub/base/KEStubBase.h"

namespace KE::Instance {

class FeedRecords {
 public:
  using Stub = KELib::Stub::KEStubBase;
  using Index = unsigned int;

 private:
  static constexpr Index kNone = ~0U;

  struct Record {
    Record() : place(0), type(0), used(0), known(0), pending(0) {}

    Stub* stub = nullptr;      // null when the object has gone
    std::uint64_t place : 45;  // of the pending entry; lasts for a year of a million a second
    std::uint64_t type : 16;
    std::uint64_t used : 1;
    std::uint64_t known : 1;
    std::uint64_t pending : 1;
    Index previous = kNone;  // these two among the pending
    Index next = kNone;
    Index chain = kNone;  // the next one in the same bucket, or the next free one
    ShortText key;
  };

 public:
  static constexpr unsigned int kMostTypes = 1U << 16;

  // An object was filed. Returns the place of its record. When it throws (std::bad_alloc) nothing
  // has changed.
  Index Add(unsigned int type, const KELib::KEString& key, Stub& stub);

  // As Add, unless the stub is recorded already.
  Index AddOnce(unsigned int type, const KELib::KEString& key, Stub& stub);

  // What is not recorded is passed over by all of these.
  void Replace(Stub& old, Stub& stub);  // by one that is filed in its place: a change
  void Change(const Stub& stub, Index likely = kNone);
  void Remove(Stub& stub);
  void RemoveAll(unsigned int type);  // O(records)

  bool IsPending() const { return first != kNone; }

  // Entries that begin from now on have this place in the order or a later one.
  std::uint64_t NextPlace() const { return nextPlace; }

  // Gives the oldest entry when its place is before `end`: kind, key, and returns the type.
  // False when there is none. Throws std::bad_alloc, and the entry stays.
  bool Give(std::uint64_t end, KEChange& change, unsigned int& type);

  // Where records are, for a thread that will call Change.
  using Shadow = StableArray<Record>::Shadow;
  void ShowTo(Shadow& shadow) const { shadow.Follow(records); }

  // A number for a stub; those that follow each other in memory have numbers that do so too.
  static std::size_t Place(const Stub& stub) {
    return reinterpret_cast<std::uintptr_t>(&stub) >> 8;
  }

 private:
  std::size_t Bucket(const Stub& stub) const { return Place(stub) & (buckets.size() - 1); }
  std::size_t Bucket(unsigned int type, const char* key) const;
  std::size_t Bucket(const Record& record) const;
  Index Find(const Stub& stub) const;
  Index FindGone(unsigned int type, const char* key) const;
  void MakeRoom();
  void GrowBuckets();
  void Enchain(Index index);
  void Unchain(Index index);
  void Rehome(Index index, Stub* stub);
  void Free(Index index);

  void Append(Index index);
  void Unlink(Index index);
  void RemoveAt(Index index);
  void ChangePartners(Stub& stub);

  StableArray<Record> records;
  std::vector<Index> buckets;  // empty or a power of two
  Index free = kNone;
  Index first = kNone;  // pending
  Index last = kNone;
  std::size_t gone = 0;  // records in use without a stub
  std::uint64_t nextPlace = 0;
};

}  // namespace KE::Instance

#endif
