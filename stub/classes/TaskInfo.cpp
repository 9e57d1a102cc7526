// SPDX-License-Identifier: MIT
#include "stub/classes/TaskInfo.h"

namespace KE::Stub {

TaskInfo::~TaskInfo() = default;

KELib::Stub::KEStubBase* CreateTaskInfo() {
  return new TaskInfo;
}

}  // namespace KE::Stub
