// SPDX-License-Identifier: MIT
//
// Holds a mutex for a scope, unless the calling thread holds it already: then the guard leaves it
// alone. This makes an operation callable with and without the lock.
//
// Thread safety: a guard belongs to the thread that made it.
// Ownership: the mutex is not owned and outlives the guard (or its Release()).
#ifndef KECPP_FOUNDATION_KEMUTEXGUARD_H
#define KECPP_FOUNDATION_KEMUTEXGUARD_H

#include "foundation/KEExport.h"
#include "foundation/KEMutex.h"
#include "foundation/KEThreadAnnotations.h"

namespace KELib {

// To the analysis the guard simply holds the mutex. The bodies are outside it, since they lock and
// unlock on a condition that it cannot follow.
class KECPP_SCOPED_CAPABILITY KECPP_API KEMutexGuard {
 public:
  // Locks `mutex` unless the calling thread holds it. Null: the guard does nothing.
  explicit KEMutexGuard(KEMutex* mutex) KECPP_ACQUIRE(mutex) KECPP_NO_THREAD_SAFETY_ANALYSIS
      : locked(mutex != nullptr && !mutex->IsLocked() ? mutex : nullptr) {
    if (locked != nullptr) locked->Lock();
  }
  KEMutexGuard(const KEMutexGuard&) = delete;
  KEMutexGuard& operator=(const KEMutexGuard&) = delete;
  // Unlocks what the constructor locked, unless Release() did.
  ~KEMutexGuard() KECPP_RELEASE() KECPP_NO_THREAD_SAFETY_ANALYSIS { Release(); }

  // Unlocks what the constructor locked before the scope ends; a second call does nothing.
  void Release() KECPP_RELEASE() KECPP_NO_THREAD_SAFETY_ANALYSIS {
    if (locked == nullptr) return;
    locked->Unlock();
    locked = nullptr;
  }

 private:
  KEMutex* locked;  // what this guard has to unlock; null when it has nothing to do
};

}  // namespace KELib

#endif
