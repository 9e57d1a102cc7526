// SPDX-License-Identifier: MIT
//
// One unit of work that a thread runs.
//
// Thread safety: Execute() runs once, on the thread that was started for it; what else is shared
//   with other threads, the subclass guards.
#ifndef KECPP_FOUNDATION_KEWORK_H
#define KECPP_FOUNDATION_KEWORK_H

#include "foundation/KEExport.h"

namespace KELib {

// What a work returns: it succeeded, it has not run yet, and the first of the codes for failures.
extern KECPP_API const int WORK_RET_SUCCESS;
extern KECPP_API const int WORK_RET_UNEXECUTED;
extern KECPP_API const int WORK_RET_ERROR_BASE;

class KECPP_API KEWork {
 public:
  KEWork();
  KEWork(const KEWork&) = delete;
  KEWork& operator=(const KEWork&) = delete;
  virtual ~KEWork();

  // Does the work and sets the return code. An exception that leaves it on a thread ends the
  // process. This one throws NotImplementedException "NotImplementedException".
  virtual void Execute();

  // The outcome; WORK_RET_UNEXECUTED until Execute() has set another one.
  virtual int GetReturnCode();

 protected:
  int returnCode;
};

}  // namespace KELib

#endif
