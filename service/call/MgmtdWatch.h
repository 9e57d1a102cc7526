// SPDX-License-Identifier: MIT
//
// Ends the process when the management daemon was restarted: sessions, filters and caches would be
// stale, and a supervisor starts it again. The process-id file distinguishes one daemon from the
// next.
//
// Thread safety: any thread. The identifier that the first check saw is process-wide; its mutex, a
//   leaf, is not held while a check pauses.
#ifndef KECPP_SERVICE_CALL_MGMTDWATCH_H
#define KECPP_SERVICE_CALL_MGMTDWATCH_H

#include "foundation/KEExport.h"
#include "foundation/KEString.h"

namespace KE::Service {

extern KECPP_API const char* const MgmtdPIDFileName;

// Appends the file's text, line feeds included, to `pid`. A missing file leaves `pid` as it is.
KECPP_API void ReadMgmtdPID(KELib::KEString& pid);

// Ends the process with status 0, after a line in the log, unless `pid` is exactly the remembered
// identifier.
KECPP_API void ExitIfMgmtdRestarted(KELib::KEString& pid);

// The first call that finds a process-id file remembers its text and returns at once. Every later
// one compares, blocks for 10 seconds, and compares again. A file that is gone counts as changed.
KECPP_API void CheckMgmtdAndExit();

// How a thread that must be able to stop waits between the two comparisons.
class KECPP_API MgmtdPause {
 public:
  virtual ~MgmtdPause();

  // Waits that long. Returns false, at once, when the thread is to stop: the check then ends.
  virtual bool Pause(int milliseconds) = 0;

  // The process is about to exit on this thread, which comes back to nothing that it was doing.
  virtual void BeforeExit() = 0;
};

// CheckMgmtdAndExit with a pause of the caller's.
KECPP_API void CheckMgmtd(MgmtdPause& pause);

}  // namespace KE::Service

#endif
