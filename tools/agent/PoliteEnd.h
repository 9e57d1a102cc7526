// SPDX-License-Identifier: MIT
//
// SIGTERM and SIGINT end this agent within two seconds, also while the library waits for a daemon
// that does not answer.
#ifndef KECPP_TOOLS_AGENT_POLITEEND_H
#define KECPP_TOOLS_AGENT_POLITEEND_H

namespace tools::agent {

// To be called before any other thread is made and before the handlers of the signals are set. From
// then on the signals come to a thread of their own; when the process still lives one and a half
// seconds after the first, it ends as it is, with status 0: the daemon then drops the session by
// itself. SIGHUP is blocked from then on, for HangUp to take.
void EndPolitely();

}  // namespace tools::agent

#endif
