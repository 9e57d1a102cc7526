// SPDX-License-Identifier: MIT
//
// The state of the connection to the daemon, for other threads.
//
// Thread safety: any thread.
#ifndef KECPP_TOOLS_AGENT_DAEMONSTATE_H
#define KECPP_TOOLS_AGENT_DAEMONSTATE_H

#include <kecpp.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>

namespace tools::agent {

struct DaemonReport {
  bool connected = false;
  unsigned long long sets = 0;  // update sets applied on this connection
  unsigned consecutiveFailures = 0;
  unsigned long long connections = 0;  // made so far
  long long lastUpdate = 0;            // milliseconds since the epoch, UTC; 0: none yet
  long long lastFailure = 0;           // likewise
  std::string lastFailureText;
  std::string version;
  unsigned long long times = 0;  // how often something was reported
};

class DaemonState {
 public:
  void Connected();
  void Lost(const std::string& reason);
  void Update(const KE::Service::KESyncStatus& status);

  DaemonReport Report();

  // Waits until something was reported after the `seen`th time (start with 0), at most for `limit`.
  // True when it was: `seen` is then the report's `times`. False at once after End.
  bool WaitForChange(unsigned long long& seen, std::chrono::milliseconds limit);
  void End();
  bool Ended();

 private:
  void Note();

  std::mutex mutex;
  std::condition_variable changed;
  DaemonReport report;  // guarded by `mutex`, like all below
  bool ended = false;
};

}  // namespace tools::agent

#endif
