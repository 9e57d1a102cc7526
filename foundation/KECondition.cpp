// SPDX-License-Identifier: MIT
#include "foundation/KECondition.h"

#include <cerrno>
#include <ctime>

#include "foundation/KETime.h"
#include "foundation/Logger.h"

namespace KELib {

const int DELAY_10MSEC = 10;
const int DELAY_100MSEC = 100;
const int DELAY_1SEC = 1000;

namespace {

void LogFailure(int result, const char* text) {
  if (result != 0) {
    Logging::Log(nullptr, Logging::LOG_LEVEL_ERROR, text);
  }
}

// The wall-clock time at which a wait that begins now ends.
timespec Deadline(int milliseconds) {
  // 32-bit arithmetic that wraps, in unsigned numbers because signed ones must not overflow.
  const unsigned int product = static_cast<unsigned int>(milliseconds) * 1000u;
  const long long total = GetTime() + static_cast<int>(product);
  timespec deadline;
  deadline.tv_sec = total / 1000000;
  deadline.tv_nsec = total % 1000000 * 1000;
  return deadline;
}

}  // namespace

KECondition::~KECondition() = default;

KEConditionImpl::KEConditionImpl() {
  LogFailure(pthread_cond_init(&condition, nullptr), "Could not initialize condition");
}

KEConditionImpl::~KEConditionImpl() {
  LogFailure(pthread_cond_destroy(&condition), "Could not destroy condition");
}

int KEConditionImpl::Wait(KEMutex* mutex, int milliseconds) {
  if (milliseconds > 0) {
    WaitT(mutex, milliseconds);
  } else {
    WaitI(mutex);
  }
  return 0;
}

void KEConditionImpl::Signal() {
  LogFailure(pthread_cond_signal(&condition), "Failed signal!");
}

bool KEConditionImpl::WaitI(KEMutex* mutex) {
  mutex->ClearOwner();
  const int result = pthread_cond_wait(&condition, &mutex->mutex);
  mutex->SetOwner();
  LogFailure(result, "Failed wait!");
  return result == 0;
}

bool KEConditionImpl::WaitT(KEMutex* mutex, int milliseconds) {
  const timespec deadline = Deadline(milliseconds);
  int result = 0;
  do {
    mutex->ClearOwner();
    result = pthread_cond_timedwait(&condition, &mutex->mutex, &deadline);
    mutex->SetOwner();
  } while (result == EINTR);
  // Every timed wait leaves this line, however it ended: log readers know it as the wait's trace.
  Logging::Log(nullptr, Logging::LOG_LEVEL_ERROR, "Failed timed wait!");
  return result == 0;
}

KECondition* CreateKECondition() {
  return new KEConditionImpl;
}

}  // namespace KELib
