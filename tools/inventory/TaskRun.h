// SPDX-License-Identifier: MIT
//
// Starts a task on the server and waits for its outcome.
#ifndef KECPP_TOOLS_INVENTORY_TASKRUN_H
#define KECPP_TOOLS_INVENTORY_TASKRUN_H

#include "tools/common/EndOfRun.h"
#include "tools/inventory/Options.h"

namespace tools::inventory {

// True exactly when the task ended in success. False also when the run ends before the task. Throws
// kecpp::Error when there is no connection, or the task cannot be started or watched.
bool RunTask(const Options& options, const EndOfRun& end);

}  // namespace tools::inventory

#endif
