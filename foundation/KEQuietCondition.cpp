// SPDX-License-Identifier: MIT
#include "foundation/KEQuietCondition.h"

#include <algorithm>
#include <cerrno>
#include <ctime>

namespace KELib {

namespace {

// Longer waits end after a year, so that the sum below cannot leave the clock's range.
constexpr long long LONGEST_WAIT = 365LL * 24 * 3600 * 1000;

timespec MonotonicDeadline(long long milliseconds) {
  const long long wait = std::min(milliseconds, LONGEST_WAIT);
  timespec deadline;
  clock_gettime(CLOCK_MONOTONIC, &deadline);
  const long long nanoseconds = deadline.tv_nsec + wait % 1000 * 1000000;
  deadline.tv_sec += wait / 1000 + nanoseconds / 1000000000;
  deadline.tv_nsec = nanoseconds % 1000000000;
  return deadline;
}

}  // namespace

KEQuietCondition::KEQuietCondition() {
  pthread_condattr_t attributes;
  pthread_condattr_init(&attributes);
  pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
  pthread_cond_init(&condition, &attributes);
  pthread_condattr_destroy(&attributes);
}

KEQuietCondition::~KEQuietCondition() {
  pthread_cond_destroy(&condition);
}

bool KEQuietCondition::Wait(KEMutex& mutex, long long milliseconds) {
  int result = 0;
  mutex.ClearOwner();
  if (milliseconds < 0) {
    result = pthread_cond_wait(&condition, &mutex.mutex);
  } else {
    const timespec deadline = MonotonicDeadline(milliseconds);
    result = pthread_cond_timedwait(&condition, &mutex.mutex, &deadline);
  }
  mutex.SetOwner();
  return result != ETIMEDOUT;
}

void KEQuietCondition::Signal() {
  pthread_cond_signal(&condition);
}

void KEQuietCondition::Broadcast() {
  pthread_cond_broadcast(&condition);
}

}  // namespace KELib
