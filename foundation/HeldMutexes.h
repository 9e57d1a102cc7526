// SPDX-License-Identifier: MIT
//
// Mutexes that a thread has taken, up to a number that is known when the library is compiled: takes
// no memory, and locks in line.
//
// Thread safety: of one thread. Ownership: the mutexes are not owned and outlive the hold.
#ifndef KECPP_FOUNDATION_HELDMUTEXES_H
#define KECPP_FOUNDATION_HELDMUTEXES_H

#include "foundation/KEMutex.h"
#include "foundation/KEThreadAnnotations.h"
#include "foundation/QuickLock.h"

namespace KELib {

// Outside the analysis: how many there are is known at run time only.
template <unsigned int kMost>
class HeldMutexes {
 public:
  HeldMutexes() = default;
  ~HeldMutexes() { Unlock(); }
  HeldMutexes(const HeldMutexes&) = delete;
  HeldMutexes& operator=(const HeldMutexes&) = delete;

  // One that the thread holds already is left alone.
  void Lock(KEMutex& mutex) KECPP_NO_THREAD_SAFETY_ANALYSIS {
    if (mutex.IsLocked()) return;
    QuickLock::Take(mutex);
    taken[count++] = &mutex;
  }

  // Gives up what was taken here.
  void Unlock() KECPP_NO_THREAD_SAFETY_ANALYSIS {
    for (unsigned int i = 0; i < count; ++i) taken[i]->Unlock();
    count = 0;
  }

 private:
  KEMutex* taken[kMost];
  unsigned int count = 0;
};

}  // namespace KELib

#endif
