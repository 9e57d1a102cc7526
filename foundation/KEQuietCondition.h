// SPDX-License-Identifier: MIT
//
// A condition variable that writes nothing to the log and distinguishes a time-out from a wake-up.
//
// Thread safety: Signal() and Broadcast() from any thread, best while holding the mutex under which
//   the awaited state changes. Destroy it only when nobody waits.
#ifndef KECPP_FOUNDATION_KEQUIETCONDITION_H
#define KECPP_FOUNDATION_KEQUIETCONDITION_H

#include <pthread.h>

#include "foundation/KEExport.h"
#include "foundation/KEMutex.h"
#include "foundation/KEThreadAnnotations.h"

namespace KELib {

class KECPP_API KEQuietCondition {
 public:
  KEQuietCondition();
  KEQuietCondition(const KEQuietCondition&) = delete;
  KEQuietCondition& operator=(const KEQuietCondition&) = delete;
  ~KEQuietCondition();

  // Gives `mutex`, which the caller holds, up until a wake-up or until `milliseconds` have passed
  // on the monotonic clock (below 0: without limit), then takes it back. False when the time was
  // over, true otherwise, also for a spurious wake-up: test the awaited state in a loop.
  bool Wait(KEMutex& mutex, long long milliseconds) KECPP_REQUIRES(mutex);

  // Wake one waiting thread, or all of them.
  void Signal();
  void Broadcast();

 private:
  pthread_cond_t condition;
};

}  // namespace KELib

#endif
