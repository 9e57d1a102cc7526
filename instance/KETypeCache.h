// SPDX-License-Identifier: MIT
//
// The top of the instance store: the data caches, by type name.
//
// Thread safety: looking a data cache up and creating one may be done from any thread at any time.
//   What is done with its stubs needs the data cache's mutex (KEDataCache). DeleteDataCache and
//   Clear take the type cache's own mutex and then those of the data caches whose stubs are linked,
//   and so wait for readers. Call them while holding no data cache's mutex: one that the calling
//   thread holds is left alone, but another thread that deletes at the same time could wait for it.
// Ownership: the type cache owns its data caches until it dies itself: one that was deleted lives
//   on as an empty shell, since a reader may still wait for its mutex.
#ifndef KECPP_INSTANCE_KETYPECACHE_H
#define KECPP_INSTANCE_KETYPECACHE_H

#include <atomic>
#include <memory>
#include <shared_mutex>
#include <vector>

#include "foundation/KEExport.h"
#include "foundation/KEHashmap.h"
#include "foundation/KEString.h"
#include "foundation/KEThreadAnnotations.h"
#include "instance/KECache.h"
#include "instance/KEDataCache.h"
#include "instance/KEDataIterator.h"

namespace KE::Instance {

class KECPP_API KETypeCache : public KECache {
 public:
  KETypeCache();
  // The data caches report to `changes` what becomes of their stubs.
  explicit KETypeCache(std::shared_ptr<ChangeHub> changes);
  ~KETypeCache() override;
  KETypeCache(const KETypeCache&) = delete;
  KETypeCache& operator=(const KETypeCache&) = delete;

  KELib::KEMutex* GetMutex() override;

  // Makes an empty data cache for a type that has none; an empty name makes nothing.
  void CreateDataCache(KELib::KEString& typeName);

  // Deletes a type's stubs and unlinks its data cache; a missing type is no error.
  void DeleteDataCache(KELib::KEString& typeName);

  // The type's data cache, or null. O(1) on average. Both forms are the same.
  KEDataCache* GetDataCache(KELib::KEString& typeName);
  KEDataCache* GetDataCacheNoLock(KELib::KEString& typeName);

  // KEDataCache::Iterator of the type's cache, under whose mutex it is called.
  // Throws SystemException "Unable to find data cache".
  KEDataIterator DataIterator(KELib::KEString& typeName);

  // The operations of the same names of the type's data cache. Throw SystemException
  // "No Data Map found for type :" and the type's name; a stub then stays the caller's.
  void GetVal(KELib::KEString& typeName, KELib::KEString& key, KELib::Stub::KEStubRef& ref);
  void SetVal(KELib::KEString& typeName, KELib::KEString& key, KELib::Stub::KEStubBase* stub);
  void RemoveVal(KELib::KEString& typeName, KELib::KEString& key);
  void RemoveValNoLock(KELib::KEString& typeName, KELib::KEString& key);

  // Deletes every stub and unlinks every data cache.
  void Clear();

  // Every data cache, in the order in which their mutexes are taken.
  std::vector<KEDataCache*> InLockOrder();

  // The type's data cache. Throws SystemException as GetVal.
  KEDataCache& Existing(KELib::KEString& typeName);

  // A number that changes whenever a data cache is made or unlinked: who remembers what
  // GetDataCache returned looks it up again then. Safe from any thread.
  unsigned int Generation() const { return table->generation.load(std::memory_order_acquire); }

  // Who learns of changes; null for a type cache that an agent made. It lives as long.
  ChangeHub* Changes() const { return changes.get(); }

  // The same while some feed is open, else null.
  ChangeHub* Listener() const;

 private:
  struct Table {
    std::shared_mutex lock;  // a leaf
    std::atomic<unsigned int> generation{0};
  };

  struct Shell {
    KELib::KEString name;
    std::unique_ptr<KEDataCache> cache;
  };

  struct Named {
    KELib::KEString name;
    KEDataCache* cache;
  };

  void Unlink(KELib::KEString& typeName) KECPP_REQUIRES(mutex);
  std::vector<Named> ListInLockOrder();

  KELib::KEHashmap<KELib::KEString, KEDataCache*> map;  // guarded by `table->lock`
  std::unique_ptr<KELib::KEMutex> mutex;
  std::unique_ptr<Table> table;
  std::vector<Shell> shells;  // unlinked data caches; guarded by `table->lock`
  const std::shared_ptr<ChangeHub> changes;
};

}  // namespace KE::Instance

#endif
