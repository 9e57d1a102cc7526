// SPDX-License-Identifier: MIT
#include "foundation/KETime.h"

#include <sys/resource.h>
#include <sys/time.h>

#include "foundation/KEException.h"

namespace KELib {

namespace {

long long Microseconds(const timeval& time) {
  return time.tv_sec * 1000000LL + time.tv_usec;
}

}  // namespace

long long GetTime() {
  timeval now{};
  if (gettimeofday(&now, nullptr) != 0) throw SystemException("SystemException");
  return Microseconds(now);
}

void GetCpuTime(long long& user, long long& system) {
  rusage usage{};
  if (getrusage(RUSAGE_SELF, &usage) != 0) throw SystemException("SystemException");
  user = Microseconds(usage.ru_utime);
  system = Microseconds(usage.ru_stime);
}

}  // namespace KELib
