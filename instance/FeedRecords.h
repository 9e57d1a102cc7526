// SPDX-License-Identifier: MIT
//
// What one feed knows of each object, and the entries that it has not given yet.
//
// An object has one record: whether the feed has given it (`known`), whether it is cached (`stub`),
// and whether an entry is pending. What kind of entry that is follows from the first two when it is
// given. So entries coalesce by themselves, and an object that is neither known nor cached has no
// record. Those to which an object is linked that comes or goes change.
//
// The records are in an array, in the order in which their objects came, and the pending entries
// are a list through it. A hash table finds them: that of a cached object by the address of its
// stub, so that a change costs no hashing of text; that of an object that has gone by class and
// key, which is asked only when something is added while there are such records. A record stays at
// its place in the array, so who remembers it finds it without the table.
//
// Complexity: O(1) amortised, and the links of an object that comes or goes.
// Memory: Add alone needs some. A change or a removal cannot fail.
// Thread safety: guarded by the hub's mutex, Prefetch aside.
#ifndef KECPP_INSTANCE_FEEDRECORDS_H
#define KECPP_INSTANCE_FEEDRECORDS_H

#include <cstdint>
#include <vector>

#include "foundation/KEString.h"
#include "instance/KEChangeFeed.h"
#include "instance/ShortText.h"
#include "stub/base/KEStubBase.h"

namespace KE::Instance {

class FeedRecords {
 public:
  using Stub = KELib::Stub::KEStubBase;
  using Index = unsigned int;

  static constexpr unsigned int kMostTypes = 1U << 16;

  // An object was filed. Returns the place of its record. When it throws (std::bad_alloc) nothing
  // has changed.
  Index Add(unsigned int type, const KELib::KEString& key, Stub& stub);

  // As Add, unless the stub is recorded already.
  void AddOnce(unsigned int type, const KELib::KEString& key, Stub& stub);

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

  // Where the array is at the moment, for Prefetch.
  const void* Array() const { return records.data(); }

  // Brings a record closer to the processor. Reads no memory, so the array may be gone.
  static void Prefetch(const void* array, Index index) {
    const auto begin = reinterpret_cast<std::uintptr_t>(array);
    // NOLINTNEXTLINE(performance-no-int-to-ptr): a pointer into an array that is gone is undefined
    __builtin_prefetch(reinterpret_cast<const void*>(begin + index * sizeof(Record)), 1);
  }

  // Spreads the addresses of stubs over the high bits. They are blocks of the heap: their lowest
  // bits are the same.
  static unsigned int Hash(const Stub* stub) {
    return static_cast<unsigned int>(reinterpret_cast<std::uintptr_t>(stub) >> 4) * 2654435769U;
  }

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

  unsigned int Bucket(const Stub* stub) const { return Hash(stub) >> shift; }
  unsigned int Bucket(unsigned int type, const char* key) const;
  unsigned int Bucket(const Record& record) const;
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

  std::vector<Record> records;
  std::vector<Index> buckets;  // empty or a power of two
  unsigned int shift = 31;     // 32 - log2(buckets)
  Index free = kNone;
  Index first = kNone;  // pending
  Index last = kNone;
  std::size_t gone = 0;  // records in use without a stub
  std::uint64_t nextPlace = 0;
};

}  // namespace KE::Instance

#endif
