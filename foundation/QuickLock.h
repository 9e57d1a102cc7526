// SPDX-License-Identifier: MIT
//
// Takes mutexes in line, for the few places that do so for every object of an update set: there the
// call of KEMutex::Lock would cost more than what it does. For use within the library; the same in
// KEMutex.h would promise the names below for good.
//
// Thread safety: as KEMutex.
#ifndef KECPP_FOUNDATION_QUICKLOCK_H
#define KECPP_FOUNDATION_QUICKLOCK_H

#include <sys/single_threaded.h>

#include <atomic>

#include "foundation/KEMutex.h"

namespace KELib {

class QuickLock {
 public:
  // As KEMutex::Lock.
  static void Take(KEMutex& mutex) KECPP_ACQUIRE(mutex) KECPP_NO_THREAD_SAFETY_ANALYSIS {
    if (!__libc_single_threaded && TryTake(mutex)) {
      mutex.SetOwner();
    } else {
      mutex.Lock();
    }
  }

  // False also while threads wait somewhere whose turn it may be.
  static bool TryTake(KEMutex& mutex) {
    return crowd.load(std::memory_order_relaxed) == 0 && pthread_mutex_trylock(&mutex.mutex) == 0;
  }

  // The threads that wait for any mutex and may be given way. While there are none, which is nearly
  // always, nobody looks for them.
  static std::atomic<unsigned int> crowd;
};

}  // namespace KELib

#endif
