// SPDX-License-Identifier: MIT
#include "tools/agent/Follower.h"

#include <iostream>
#include <thread>
#include <utility>

namespace tools::agent {
namespace {

constexpr int WAIT_SLICE_MS = 200;
constexpr int PAUSE_SLICES = 5;

// While it exists, the connection's caches may be read.
class OpenGate {
 public:
  OpenGate(CacheGate& opened, DaemonConnection& connection) : gate(opened) {
    gate.Open({&connection.Cache(), connection.HasAuthorization()});
  }
  ~OpenGate() { gate.Close(); }
  OpenGate(const OpenGate&) = delete;
  OpenGate& operator=(const OpenGate&) = delete;

 private:
  CacheGate& gate;
};

}  // namespace

Follower::Follower(KE::Service::KEServiceInstManager& serviceManager, ConnectionNeeds asked,
                   const EndOfRun& endOfRun, CacheGate& cacheGate, DaemonState& daemonState)
    : manager(serviceManager),
      needs(std::move(asked)),
      end(endOfRun),
      gate(cacheGate),
      state(daemonState) {}

void Follower::Run() {
  while (!end.Ended()) {
    try {
      FollowOneConnection();
    } catch (const ConnectionError& error) {
      Report(error.what());
    }
    Pause();
  }
}

void Follower::FollowOneConnection() {
  DaemonConnection connection(manager, needs, end);
  connection.Watch(end);
  const OpenGate opened(gate, connection);
  state.Connected();
  reported.clear();
  FollowUntilLost(connection);
}

void Follower::FollowUntilLost(DaemonConnection& connection) {
  unsigned long long seen = 0;
  std::string reason;
  while (!end.Ended()) {
    connection.Sync().WaitForChange(seen, WAIT_SLICE_MS);
    KE::Service::KESyncStatus status;
    connection.Sync().GetStatus(status);
    state.Update(status);
    if (connection.IsLost(reason)) return Report("connection lost (" + reason + ")");
  }
}

void Follower::Report(const std::string& failure) {
  state.Lost(failure);
  if (failure != reported && !end.Ended())
    std::cerr << "kecpp-agent: " << failure << ", connecting again\n";
  reported = failure;
}

void Follower::Pause() const {
  for (int slice = 0; slice < PAUSE_SLICES && !end.Ended(); ++slice) {
    std::this_thread::sleep_for(std::chrono::milliseconds(WAIT_SLICE_MS));
  }
}

}  // namespace tools::agent
