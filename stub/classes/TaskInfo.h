// SPDX-License-Identifier: MIT
//
// How a server task ended. Filed under TaskInfoClass; the stub itself reports no class name.
#ifndef KECPP_STUB_CLASSES_TASKINFO_H
#define KECPP_STUB_CLASSES_TASKINFO_H

#include "foundation/KEExport.h"
#include "foundation/KEString.h"
#include "stub/base/KEStubBase.h"
#include "stub/classes/ClassNames.h"
#include "stub/classes/ManagedObjectReference.h"

namespace KE::Stub {

class KECPP_API TaskInfo : public KELib::Stub::KEStubBase {
 public:
  ~TaskInfo() override;

  ManagedObjectReference task;
  KELib::KEString state;  // "success" or "error"
};

// A new, empty record; the caller owns it.
KECPP_API KELib::Stub::KEStubBase* CreateTaskInfo();

}  // namespace KE::Stub

#endif
