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
#include "tools/agent/SyncState.h"
#include "tools/common/Connection.h"
#include "tools/common/EndOfRun.h"
#include "tools/inventory/Options.h"

namespace cimxml {

class Follower {
 public:
  // The arguments outlive the object. Failures are told on standard error, each once.
  Follower(KE::Service::KEServiceInstManager& manager, const inventory::Options& options,
           const inventory::EndOfRun& end, CacheGate& gate, SyncState& state);

  // Returns at the end of the run, with the gate closed.
  void Run();

 private:
  void FollowOneConnection();
  void FollowUntilLost(inventory::Connection& connection);
  void Tell(const std::string& failure);
  void Pause() const;

  KE::Service::KEServiceInstManager& manager;
  const inventory::Options& options;
  const inventory::EndOfRun& end;
  CacheGate& gate;
  SyncState& state;
  std::string told;  // the last failure
};

}  // namespace cimxml

#endif
