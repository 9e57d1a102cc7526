// SPDX-License-Identifier: MIT
#include "instance/KEMultiCacheLock.h"

#include <memory>

#include "instance/KEDataCache.h"
#include "instance/KETypeCache.h"

namespace KELib {

template <>
KECPP_NO_THREAD_SAFETY_ANALYSIS bool DeleteVal<KE::Instance::KECacheLock>(
    KE::Instance::KECacheLock* lock) {
  if (lock != nullptr && lock->cache != nullptr) {
    KEMutex* mutex = lock->cache->GetMutex();
    if (mutex->IsLocked()) mutex->Unlock();
  }
  delete lock;
  return true;
}

}  // namespace KELib

namespace KE::Instance {

KEMultiCacheLock::KEMultiCacheLock() : names(2), locks(2) {}

KEMultiCacheLock::~KEMultiCacheLock() {
  locks.Clear();
}

void KEMultiCacheLock::LockCache(KETypeCache* typeCache, KELib::KEString& typeName) {
  if (typeCache == nullptr || names.Index(typeName) > names.Count()) return;
  KEDataCache* cache = typeCache->GetDataCache(typeName);
  if (cache == nullptr) return;
  auto lock = std::make_unique<KECacheLock>(cache);
  names.Add(typeName);
  locks.Add(lock.get());
  lock.release();
  if (!cache->GetMutex()->IsLocked()) cache->GetMutex()->Lock();
}

}  // namespace KE::Instance
