// SPDX-License-Identifier: MIT
//
// What tests put in the place of the world when they test the watch on the management daemon. Not
// for users of the library. Changed only while no other thread checks.
#ifndef KECPP_SERVICE_CALL_MGMTDWATCHSEAMS_H
#define KECPP_SERVICE_CALL_MGMTDWATCHSEAMS_H

#include "foundation/KEExport.h"

namespace KE::Service {

struct MgmtdWatchSeams {
  const char* pidFile;                             // MgmtdPIDFileName
  void (*sleepMicroseconds)(unsigned int amount);  // usleep
  void (*exitProcess)(int status);                 // exit; one that returns ends the check
  int pauseMilliseconds = 10000;                   // between two looks at the file
};

// The process's one set.
KECPP_API MgmtdWatchSeams& GetMgmtdWatchSeams();

// Puts the defaults back and forgets the remembered process identifier.
KECPP_API void ResetMgmtdWatch();

}  // namespace KE::Service

#endif
