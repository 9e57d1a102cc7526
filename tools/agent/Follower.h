// SPDX-License-Identifier: MIT
//
// Keeps a connection to the daemon: makes it, opens the caches to readers, follows it, and makes
// another one when it is lost.
//
// Thread safety: one thread runs it.
#ifndef KECPP_TOOLS_AGENT_FOLLOWER_H
#define KECPP_TOOLS_AGENT_FOLLOWER_H

#include <kecpp.h>

#include <string>

#include "tools/agent/CacheGate.h"
#include "tools/agent/DaemonState.h"
#include "tools/common/DaemonConnection.h"
#include "tools/common/EndOfRun.h"

namespace tools::agent {

class Follower {
 public:
  // The arguments outlive the object. Failures are reported on standard error, each once.
  Follower(KE::Service::KEServiceInstManager& manager, ConnectionNeeds needs, const EndOfRun& end,
           CacheGate& gate, DaemonState& state);

  // Returns at the end of the run, with the gate closed.
  void Run();

 private:
  void FollowOneConnection();
  void FollowUntilLost(DaemonConnection& connection);
  void Report(const std::string& failure);
  void Pause() const;

  KE::Service::KEServiceInstManager& manager;
  const ConnectionNeeds needs;
  const EndOfRun& end;
  CacheGate& gate;
  DaemonState& state;
  std::string reported;  // the last failure
};

}  // namespace tools::agent

#endif
