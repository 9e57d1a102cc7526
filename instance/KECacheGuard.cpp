// SPDX-License-Identifier: MIT
#include "instance/KECacheGuard.h"

#include "instance/KETypeCache.h"
#include "instance/ObjectKinds.h"

namespace KE::Instance {

using KELib::KEString;

KECacheGuard::KECacheGuard(KETypeCache* cache) : typeCache(cache) {}

KECacheGuard::~KECacheGuard() {
  Unlock();
}

void KECacheGuard::LockFor(KEString& objectType) {
  LockKinds(KindOf(objectType).group);
}

void KECacheGuard::LockAuthorization() {
  LockKinds(LockGroup::authorization);
}

void KECacheGuard::LockComputerSystems() {
  LockKinds(LockGroup::computerSystems);
}

void KECacheGuard::LockTasks() {
  LockKinds(LockGroup::tasks);
}

void KECacheGuard::LockAll() {
  for (KEDataCache* cache : typeCache->InLockOrder()) Lock(cache);
}

void KECacheGuard::LockLinked(KEString& typeName) {
  if (const ObjectKind* kind = KindOfCache(typeName.Cstr())) {
    LockKinds(kind->group);
  } else {
    Lock(typeCache->GetDataCache(typeName));
  }
}

void KECacheGuard::LockKinds(LockGroup group) {
  for (const ObjectKind& kind : KindsOf(group)) {
    KEString type(kind.cacheClass);
    Lock(typeCache->GetDataCache(type));
  }
}

void KECacheGuard::Lock(KEDataCache* cache) {
  if (cache == nullptr) return;
  KELib::KEMutex* const mutex = cache->GetMutex();
  if (mutex->IsLocked()) return;
  taken.push_back(nullptr);  // room first: a mutex that is taken must be remembered
  mutex->Lock();
  taken.back() = mutex;
}

void KECacheGuard::Unlock() {
  for (KELib::KEMutex* mutex : taken) {
    if (mutex != nullptr) mutex->Unlock();
  }
  taken.clear();
}

}  // namespace KE::Instance
