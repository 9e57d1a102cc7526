// SPDX-License-Identifier: MIT
//
// A condition variable for use with KEMutex.
//
// Every timed wait leaves an error line in the log, so nothing polls with short timed waits;
// KEQuietCondition is for the library's own waits.
//
// Thread safety: Signal() from any thread; Wait() as its contract says. Destroy it only when
//   nobody waits.
#ifndef KECPP_FOUNDATION_KECONDITION_H
#define KECPP_FOUNDATION_KECONDITION_H

#include <pthread.h>

#include "foundation/KEExport.h"
#include "foundation/KEMutex.h"

namespace KELib {

// Pauses, in milliseconds.
extern KECPP_API const int DELAY_10MSEC;
extern KECPP_API const int DELAY_100MSEC;
extern KECPP_API const int DELAY_1SEC;

class KECPP_API KECondition {
 public:
  virtual ~KECondition();

  // Gives `mutex`, which the caller holds, up until a signal or, for a positive `milliseconds`,
  // until that time has passed (above 2147483 the product wraps), then takes it back. Always 0,
  // also after a spurious wake-up or a failure, which is logged: test the awaited state afterwards.
  // Throws SystemException when the clock fails.
  virtual int Wait(KEMutex* mutex, int milliseconds) = 0;

  // Wakes one waiting thread; without one nothing happens. A failure is logged.
  virtual void Signal() = 0;
};

// The implementation over POSIX condition variables. Failures are logged, never thrown.
class KECPP_API KEConditionImpl : public KECondition {
 public:
  KEConditionImpl();
  KEConditionImpl(const KEConditionImpl&) = delete;
  KEConditionImpl& operator=(const KEConditionImpl&) = delete;
  ~KEConditionImpl() override;

  int Wait(KEMutex* mutex, int milliseconds) override;
  void Signal() override;

  // The two kinds of wait: without limit, and for so many milliseconds. True: ended by a signal.
  bool WaitI(KEMutex* mutex);
  bool WaitT(KEMutex* mutex, int milliseconds);

 private:
  pthread_cond_t condition;
};

// A new condition, owned by the caller.
KECPP_API KECondition* CreateKECondition();

}  // namespace KELib

#endif
