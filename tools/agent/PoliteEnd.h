// SPDX-License-Identifier: MIT
//
// SIGTERM and SIGINT end this agent within two seconds, also while the library waits for a daemon
// that does not answer.
#ifndef KECPP_TOOLS_AGENT_POLITEEND_H
#define KECPP_TOOLS_AGENT_POLITEEND_H

namespace tools::agent {

// Call it before any other thread is made and before the handlers of the signals are set. From then
// on a separate thread gets the signals. When the process still runs one and a half seconds after
// the first signal, it ends as it is, with status 0; the daemon drops the session later. SIGHUP is
// blocked from then on, for HangUp.
void EndPolitely();

}  // namespace tools::agent

#endif
