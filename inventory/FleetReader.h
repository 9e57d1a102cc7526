// SPDX-License-Identifier: MIT
//
// The thread that keeps a FleetStore true: it reads everything at one revision and watches from
// there on, at another member when one fails.
//
// Thread safety: any thread. Lock: `mutex`, a leaf.
#ifndef KECPP_INVENTORY_FLEETREADER_H
#define KECPP_INVENTORY_FLEETREADER_H

#include <kecpp/fleet.h>

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "fleet/EtcdClient.h"
#include "fleet/Watch.h"
#include "inventory/FleetScope.h"
#include "inventory/FleetStore.h"

namespace kecpp {

class FleetReader {
 public:
  // Throws Error for options that cannot be meant.
  FleetReader(const FleetOptions& options, std::shared_ptr<FleetStore> store);
  ~FleetReader();
  FleetReader(const FleetReader&) = delete;
  FleetReader& operator=(const FleetReader&) = delete;

  // Starts the thread; unless it is to connect in the background, waits until everything was read.
  // Throws Error.
  void Start();
  void Close();

  FleetStatus Status() const;
  bool WaitForStatus(const FleetStatus& seen, std::chrono::milliseconds limit) const;

 private:
  using State = FleetStatus::State;

  void Run();
  bool Prepare();
  void FollowOn();
  void ReadAll(const fleet::Position& at);
  void Take(const std::vector<fleet::WatchEvent>& events);
  void StartOver(const std::string& reason);
  void Skip(const std::string& key, const char* reason);
  void SetState(State state, const std::string& reason);
  void PauseAfterFailure();
  bool IsEnding() const;

  const FleetOptions options;
  const std::shared_ptr<FleetStore> store;
  const FleetScope scope;
  fleet::EtcdClient client;            // the thread's own, like the next two
  std::optional<fleet::Watch> watch;   // none: everything is to be read
  std::chrono::milliseconds pause{0};  // after the last failure

  mutable std::mutex mutex;
  mutable std::condition_variable changed;
  FleetStatus status;     // guarded by `mutex`, like all below
  bool isEnding = false;  // the thread is to end
  std::once_flag closed;  // owns its lock
  std::thread thread;     // constant after Start
};

}  // namespace kecpp

#endif
