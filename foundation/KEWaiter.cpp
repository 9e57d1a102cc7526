// SPDX-License-Identifier: MIT
#include "foundation/KEWaiter.h"

#include <algorithm>
#include <chrono>

#include "foundation/KEMutex.h"
#include "foundation/KEMutexGuard.h"
#include "foundation/KEQuietCondition.h"
#include "foundation/KEThreadAnnotations.h"

namespace KELib {

namespace {

typedef std::chrono::steady_clock Clock;

class KEWaiterImpl : public KEWaiter {
 public:
  bool Wait(int milliseconds) override;
  void Signal() override;

 private:
  KEMutex mutex;
  KEQuietCondition condition;
  bool signalled KECPP_GUARDED_BY(mutex) = false;
};

// What is left until `end` in whole milliseconds, rounded up so that a wait is never cut short.
long long MillisecondsUntil(Clock::time_point end) {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
  return std::max<long long>(left.count(), 0);
}

bool KEWaiterImpl::Wait(int milliseconds) {
  const Clock::time_point end = Clock::now() + std::chrono::milliseconds(milliseconds);
  KEMutexGuard guard(&mutex);
  bool inTime = true;
  while (!signalled && inTime) {
    inTime = condition.Wait(mutex, milliseconds > 0 ? MillisecondsUntil(end) : -1);
  }
  return signalled;
}

void KEWaiterImpl::Signal() {
  // Woken under the mutex: once that is free, the waiting thread may delete this object.
  KEMutexGuard guard(&mutex);
  signalled = true;
  condition.Broadcast();
}

}  // namespace

KEWaiter::~KEWaiter() = default;

KEWaiter* CreateKEWaiter() {
  return new KEWaiterImpl;
}

}  // namespace KELib
