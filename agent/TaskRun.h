// SPDX-License-Identifier: MIT
//
// Starts a task on the server and waits for its outcome.
#ifndef KECPP_AGENT_TASKRUN_H
#define KECPP_AGENT_TASKRUN_H

#include "agent/Connection.h"
#include "agent/EndOfRun.h"
#include "agent/Options.h"

namespace inventory {

// True exactly when the task ended in success. False also when the run ends before the task; the
// connection is of no further use then. Throws ConnectionError when the task cannot be started or
// watched.
bool RunTask(Connection& connection, const TaskCall& call, const EndOfRun& end);

}  // namespace inventory

#endif
