// SPDX-License-Identifier: MIT
#include "foundation/KEWork.h"

#include "foundation/KEException.h"

namespace KELib {

const int WORK_RET_SUCCESS = 0;
const int WORK_RET_UNEXECUTED = 1;
const int WORK_RET_ERROR_BASE = 2;

KEWork::KEWork() : returnCode(WORK_RET_UNEXECUTED) {}

KEWork::~KEWork() = default;

void KEWork::Execute() {
  throw NotImplementedException("NotImplementedException");
}

int KEWork::GetReturnCode() {
  return returnCode;
}

}  // namespace KELib
