// SPDX-License-Identifier: MIT
//
// Gathers the mutexes of several data caches by type name and gives them up together.
//
// LockCache takes a mutex only for a name that it has registered before, and registers only names
// whose mutex it takes: an object that starts empty never takes any. This is how the class has
// always behaved; real exclusion is KECacheGuard's work.
//
// Thread safety: belongs to the thread that made it.
#ifndef KECPP_INSTANCE_KEMULTICACHELOCK_H
#define KECPP_INSTANCE_KEMULTICACHELOCK_H

#include "foundation/ElementPolicies.h"
#include "foundation/KEExport.h"
#include "foundation/KEString.h"
#include "foundation/KEVector.h"
#include "instance/KECache.h"

namespace KE::Instance {

class KETypeCache;

// One held cache. Deleting it through DeleteVal gives the mutex up if the calling thread holds it.
class KECPP_API KECacheLock {
 public:
  // Refers to `held`, whose mutex the caller has taken.
  explicit KECacheLock(KECache* held = nullptr) : cache(held) {}

  KECache* cache;  // not owned
};

}  // namespace KE::Instance

namespace KELib {

template <>
KECPP_API bool DeleteVal<KE::Instance::KECacheLock>(KE::Instance::KECacheLock* lock);

}  // namespace KELib

namespace KE::Instance {

class KECPP_API KEMultiCacheLock {
 public:
  KEMultiCacheLock();
  ~KEMultiCacheLock();  // gives the mutexes up in the order in which they were taken
  KEMultiCacheLock(const KEMultiCacheLock&) = delete;
  KEMultiCacheLock& operator=(const KEMultiCacheLock&) = delete;

  // Nothing without a type cache, for a type without a data cache, and for a new name.
  void LockCache(KETypeCache* typeCache, KELib::KEString& typeName)
      KECPP_NO_THREAD_SAFETY_ANALYSIS;  // conditional, and given up elsewhere

 private:
  KELib::KEVector<KELib::KEString> names;
  KELib::KEVector<KECacheLock*> locks;
};

}  // namespace KE::Instance

#endif
