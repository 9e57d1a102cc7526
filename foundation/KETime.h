// SPDX-License-Identifier: MIT
//
// The clocks. Thread safety: any thread.
#ifndef KECPP_FOUNDATION_KETIME_H
#define KECPP_FOUNDATION_KETIME_H

#include "foundation/KEExport.h"

namespace KELib {

// Wall-clock time in microseconds since the epoch, UTC. Throws SystemException "SystemException"
// when the clock fails.
KECPP_API long long GetTime();

// The process's processor time in microseconds, in user and in system mode.
KECPP_API void GetCpuTime(long long& user, long long& system);

}  // namespace KELib

#endif
