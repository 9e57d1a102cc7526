// SPDX-License-Identifier: MIT
//
// What one feed knows of each object, and the entries that it has not given yet.
//
// An object has one record: whether the feed has given it (`known`), whether it is cached (`stub`),
// and whether an entry is pending. What kind of entry that is follows from the first two when it is
// given. So entries coalesce by themselves, and an object that is neither known nor cached has no
// record. Those to which an object is linked that comes or goes change.
//
// One table with open addressing holds both sorts of records. That of a cached object is found by
// the address of its stub, so that a change costs no hashing of text and touches one cache line,
// which Prefetch can have brought by then. That of an object that has gone is found by class and
// key, which is asked only when something is added while there are such records. The pending
// entries are a list through the table.
//
// Complexity: O(1) amortised, and the links of an object that comes or goes.
// Memory: Add alone needs some. A change or a removal cannot fail.
// Thread safety: guarded by the hub's mutex, Prefetch aside.
#ifndef KECPP_INSTANCE_FEEDRECORDS_H
#define KECPP_INSTANCE_FEEDRECORDS_H

#include <cstdint>
#include <memory>
#include <vector>

#include "foundation/KEString.h"
#include "instance/KEChangeFeed.h"
#include "stub/base/KEStubBase.h"

namespace KE::Instance {

class FeedRecords {
 public:
  using Stub = KELib::Stub::KEStubBase;

  static constexpr unsigned int kMostTypes = 1U << 16;

  // An object was filed. When it throws (std::bad_alloc) nothing has changed.
  void Add(unsigned int type, const KELib::KEString& key, Stub& stub);

  // As Add, unless the stub is recorded already.
  void AddOnce(unsigned int type, const KELib::KEString& key, Stub& stub);

  // What is not recorded is passed over by all of these.
  void Replace(Stub& old, Stub& stub);  // by one that is filed in its place: a change
  void Change(const Stub& stub);
  void Remove(Stub& stub);
  void RemoveAll(unsigned int type);  // O(records)

  bool IsPending() const { return first != kNone; }

  // Entries that begin from now on have this place or a later one.
  std::uint64_t NextPlace() const { return nextPlace; }

  // Gives the oldest entry when its place is before `end`: kind, key, and returns the type.
  // False when there is none. Throws std::bad_alloc, and the entry stays.
  bool Give(std::uint64_t end, KEChange& change, unsigned int& type);

  // Where the table is at the moment, for Prefetch.
  const void* Table() const { return slots.data(); }
  unsigned int Shift() const { return shift; }

  // Brings the record of a stub closer to the processor. Reads no memory, so the table may be gone.
  static void Prefetch(const void* table, unsigned int shift, const Stub& stub) {
    const auto begin = reinterpret_cast<std::uintptr_t>(table);
    // NOLINTNEXTLINE(performance-no-int-to-ptr): a pointer into a table that is gone is undefined
    __builtin_prefetch(reinterpret_cast<const void*>(begin + Home(&stub, shift) * sizeof(Record)),
                       1);
  }

 private:
  using Index = unsigned int;
  static constexpr Index kNone = ~0U;

  struct Record {
    Record() : place(0), type(0), known(0), pending(0) {}

    Stub* stub = nullptr;         // null when the object has gone
    std::unique_ptr<char[]> key;  // null when the slot is empty
    Index previous = kNone;       // these two among the pending
    Index next = kNone;
    std::uint64_t place : 46;  // of the pending entry; lasts for two years of a million a second
    std::uint64_t type : 16;
    std::uint64_t known : 1;
    std::uint64_t pending : 1;
  };

  // Of a number's hash the highest bits say where a record's search begins.
  static unsigned int Home(unsigned int number, unsigned int shift) {
    return number * 2654435769U >> shift;
  }
  // Stubs are blocks of the heap: their lowest bits are the same.
  static unsigned int Home(const Stub* stub, unsigned int shift) {
    return Home(static_cast<unsigned int>(reinterpret_cast<std::uintptr_t>(stub) >> 4), shift);
  }
  unsigned int Home(unsigned int type, const char* key) const;
  unsigned int Home(const Record& record) const;
  Index After(Index index) const { return (index + 1) & (static_cast<Index>(slots.size()) - 1); }

  Index Find(const Stub& stub) const;
  Index FindGone(unsigned int type, const char* key) const;
  void MakeRoom();
  Index Put(Record&& record);
  void Rehome(Index index, Stub* stub);
  void CloseGap(Index hole);
  void Erase(Index index);

  void Append(Index index);
  void Unlink(Index index);
  void Relink(Index index);
  void RemoveAt(Index index);
  void ChangePartners(Stub& stub);

  std::vector<Record> slots;  // empty or a power of two, a quarter of them free
  std::size_t used = 0;
  unsigned int shift = 31;  // 32 - log2(slots)
  Index first = kNone;      // pending
  Index last = kNone;
  std::size_t gone = 0;  // records without a stub
  std::uint64_t nextPlace = 0;
};

}  // namespace KE::Instance

#endif
