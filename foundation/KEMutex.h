// SPDX-License-Identifier: MIT
//
// A plain mutex that knows whether the calling thread holds it.
//
// It is not recursive: a thread that locks it twice waits for itself. Code that is reached both
// with and without the lock uses KEMutexGuard, which leaves a mutex alone that its thread holds.
//
// Thread safety: every operation from any thread. Destroy it only when nobody holds it or waits.
#ifndef KECPP_FOUNDATION_KEMUTEX_H
#define KECPP_FOUNDATION_KEMUTEX_H

#include <pthread.h>

#include <atomic>

#include "foundation/KEExport.h"
#include "foundation/KEThreadAnnotations.h"

namespace KELib {

class KECPP_CAPABILITY("mutex") KECPP_API KEMutex {
 public:
  KEMutex();
  KEMutex(const KEMutex&) = delete;
  KEMutex& operator=(const KEMutex&) = delete;
  ~KEMutex();

  // Waits for the mutex and makes the calling thread its owner.
  void Lock() KECPP_ACQUIRE();

  // Gives it back. The caller holds it.
  void Unlock() KECPP_RELEASE() {
    ClearOwner();
    pthread_mutex_unlock(&mutex);
  }

  // Whether the calling thread holds it; another thread's hold is reported as false.
  bool IsLocked() const { return owner.load(std::memory_order_relaxed) == pthread_self(); }

 private:
  // Their waits give the mutex up and take it back inside the system library.
  friend class KEConditionImpl;
  friend class KEQuietCondition;
  friend class QuickLock;

  void LockInTurn();
  void AwaitAndTake();
  bool TakeUntil(long long end);
  void GiveWay();
  void SetOwner() { owner.store(pthread_self(), std::memory_order_relaxed); }
  void ClearOwner() { owner.store(0, std::memory_order_relaxed); }

  pthread_mutex_t mutex;
  // Read by threads that do not hold the mutex, for which only "is it me" matters: no order needed.
  std::atomic<pthread_t> owner{0};
};

}  // namespace KELib

#endif
