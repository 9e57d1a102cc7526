// SPDX-License-Identifier: MIT
//
// A data cache owns every stub of one object type, filed under a text.
//
// Thread safety: none, except RemoveVal. Hold GetMutex() while calling anything else and
//   for as long as a stub or an iterator obtained here is in use. Several caches are locked in this
//   order: Zorbel_Role, Zorbel_Privilege, Zorbel_Identity, ZORBEL_VMComputerSystem,
//   ZORBEL_ORXComputerSystem, any other by name, TaskInfo. While a cache's mutex is held, call no
//   operation of a data sync, a session or a service instance: they take theirs first.
// Ownership: the cache deletes its stubs. Deleting a linked stub writes into its partners: a
//   caller that removes machines or hosts holds the mutexes of both caches; for roles, privileges
//   or identities those of all three.
#ifndef KECPP_INSTANCE_KEDATACACHE_H
#define KECPP_INSTANCE_KEDATACACHE_H

#include <memory>

#include "foundation/KEExport.h"
#include "foundation/KEHashmap.h"
#include "foundation/KEString.h"
#include "foundation/KEThreadAnnotations.h"
#include "instance/KECache.h"
#include "instance/KEDataIterator.h"
#include "stub/base/KEAssocStubBase.h"
#include "stub/base/KEStubBase.h"
#include "stub/base/KEStubRef.h"

namespace KE::Instance {

class CacheFetch;
class CacheWalk;
class ChangeHub;

class KECPP_API KEDataCache : public KECache {
 public:
  KEDataCache();
  ~KEDataCache() override;
  KEDataCache(const KEDataCache&) = delete;
  KEDataCache& operator=(const KEDataCache&) = delete;

  KELib::KEMutex* GetMutex() override;

  // Offers the stub filed under `key` to `ref`. A miss leaves `ref` as it was, and a `ref` that
  // already holds a stub keeps it. The caller holds the mutex. O(1) on average.
  void GetVal(KELib::KEString& key, KELib::Stub::KEStubRef& ref);

  // Files a stub, which the cache owns from then on. Look the key up first: a stub that is filed
  // under it is deleted, and the key then has two entries with the new stub. The caller holds the
  // mutex. O(1) amortised. When it throws (std::bad_alloc) the stub stays the caller's.
  void SetVal(KELib::KEString& key, KELib::Stub::KEStubBase* stub);

  // Removes and deletes the stub under `key` and ends every iterator; a missing key is no error.
  // Takes the mutex unless the calling thread holds it already.
  void RemoveVal(KELib::KEString& key);

  // The same; the caller holds the mutex.
  void RemoveValNoLock(KELib::KEString& key);

  // Deletes every stub and ends every iterator. The caller holds the mutex. O(n).
  void ClearNoLock();

  // An iterator on the first stub. The caller holds the mutex, also while the iterator lives.
  KEDataIterator Iterator();

  // The number of entries. The caller holds the mutex.
  unsigned int Size();

  // --- for the library ---------------------------------------------------------------------------

  // What a search has learned of a key; good until something is filed or removed.
  struct KeyPlace {
    unsigned int hash = 0;
    bool isFree = false;  // no entry has the key
  };

  // The stub filed under a text of that length, or null. The caller holds the mutex. O(1) on
  // average.
  KELib::Stub::KEStubBase* Find(const char* text, unsigned int length, KeyPlace& place);

  // As SetVal, for a key whose place Find has just given: nothing is looked up a second time.
  void SetValAt(const KeyPlace& place, KELib::KEString& key, KELib::Stub::KEStubBase* stub);

  // From now on `hub`, which outlives the cache or is null, learns what changes here; `type` is its
  // number for the cache's name. The caller holds the mutex, or nobody else knows the cache yet.
  void Follow(ChangeHub* hub, unsigned int type);

  unsigned int FeedType() const;

 private:
  friend class CacheFetch;
  friend class CacheWalk;
  class State;

  // Says to the analysis what it cannot follow: the caller holds the mutex, by a KECacheGuard
  // mostly.
  void HeldByCaller() const KECPP_ASSERT_HELD(mutex) {}

  State& Own() const;
  ChangeHub* Listener() const;
  void FileAndTell(ChangeHub& hub, KELib::KEString& key, KELib::Stub::KEStubBase* stub)
      KECPP_REQUIRES(mutex);
  void Remove(KELib::KEString& key) KECPP_REQUIRES(mutex);

  KELib::KEHashmap<KELib::KEString, KELib::Stub::KEStubBase*> map KECPP_GUARDED_BY(mutex);
  std::unique_ptr<KELib::KEMutex> mutex;  // a State, for the object itself has no room
};

}  // namespace KE::Instance

#endif
