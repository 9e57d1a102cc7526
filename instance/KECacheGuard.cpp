// SPDX-License-Identifier: MIT
#include "instance/KECacheGuard.h"

#include "instance/KETypeCache.h"
#include "stub/classes/ClassNames.h"

namespace KE::Instance {

using KELib::KEString;

KECacheGuard::KECacheGuard(KETypeCache* cache) : typeCache(cache) {}

KECacheGuard::~KECacheGuard() { Unlock(); }

void KECacheGuard::LockFor(KEString& objectType) {
  if (objectType.Equals("VirtualMachine") || objectType.Equals("HostSystem")) {
    LockComputerSystems();
  } else if (objectType.Equals("AuthorizationManager")) {
    LockAuthorization();
  } else {
    LockTasks();
  }
}

void KECacheGuard::LockAuthorization() {
  LockTypes({KE::Stub::Zorbel_RoleClass, KE::Stub::Zorbel_PrivilegeClass,
             KE::Stub::Zorbel_IdentityClass});
}

void KECacheGuard::LockComputerSystems() {
  LockTypes({KE::Stub::ZORBEL_VMComputerSystemClass, KE::Stub::ZORBEL_ORXComputerSystemClass});
}

void KECacheGuard::LockTasks() { LockTypes({KE::Stub::TaskInfoClass}); }

void KECacheGuard::LockAll() {
  for (KEDataCache* cache : typeCache->InLockOrder()) LockOne(cache);
}

void KECacheGuard::LockTypes(std::initializer_list<const char*> names) {
  taken.reserve(taken.size() + names.size());
  for (const char* name : names) {
    KEString type(name);
    LockOne(typeCache->GetDataCache(type));
  }
}

void KECacheGuard::LockOne(KEDataCache* cache) {
  if (cache == nullptr || cache->GetMutex()->IsLocked()) return;
  taken.push_back(nullptr);  // room first: a mutex that is taken must be remembered
  cache->GetMutex()->Lock();
  taken.back() = cache->GetMutex();
}

void KECacheGuard::Unlock() {
  for (KELib::KEMutex* mutex : taken) {
    if (mutex != nullptr) mutex->Unlock();
  }
  taken.clear();
}

}  // namespace KE::Instance
