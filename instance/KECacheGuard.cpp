// SPDX-License-Identifier: MIT
#include "instance/KECacheGuard.h"

#include <algorithm>

#include "instance/KETypeCache.h"
#include "stub/classes/ClassNames.h"

namespace KE::Instance {

using KELib::KEString;

namespace {

// The types whose stubs are linked with each other, in lock order. They are read through pointers,
// since the names are defined elsewhere.
using TypeNames = std::initializer_list<const char* const*>;
constexpr TypeNames kComputerSystems = {&KE::Stub::ZORBEL_VMComputerSystemClass,
                                        &KE::Stub::ZORBEL_ORXComputerSystemClass};
constexpr TypeNames kAuthorization = {&KE::Stub::Zorbel_RoleClass, &KE::Stub::Zorbel_PrivilegeClass,
                                      &KE::Stub::Zorbel_IdentityClass};

bool IsOneOf(const KEString& typeName, TypeNames names) {
  return std::any_of(names.begin(), names.end(),
                     [&](const char* const* name) { return typeName.Equals(*name); });
}

}  // namespace

KECacheGuard::KECacheGuard(KETypeCache* cache) : typeCache(cache) {}

KECacheGuard::~KECacheGuard() {
  Unlock();
}

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
  LockTypes(kAuthorization);
}

void KECacheGuard::LockComputerSystems() {
  LockTypes(kComputerSystems);
}

void KECacheGuard::LockTasks() {
  LockTypes({&KE::Stub::TaskInfoClass});
}

void KECacheGuard::LockAll() {
  for (KEDataCache* cache : typeCache->InLockOrder()) Lock(cache);
}

void KECacheGuard::LockLinked(KEString& typeName) {
  if (IsOneOf(typeName, kComputerSystems)) {
    LockComputerSystems();
  } else if (IsOneOf(typeName, kAuthorization)) {
    LockAuthorization();
  } else {
    Lock(typeCache->GetDataCache(typeName));
  }
}

void KECacheGuard::LockTypes(std::initializer_list<const char* const*> names) {
  taken.reserve(taken.size() + names.size());
  for (const char* const* name : names) {
    KEString type(*name);
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
