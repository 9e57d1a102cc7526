// SPDX-License-Identifier: MIT
//
// Stops a data sync's loop: asks it to end, cancels its wait on the server, and waits until every
// thread has left.
//
// Thread safety: every operation from any thread, SetServer apart. No lock is held while it waits.
// Ownership: borrows what it is made with; all of it outlives the object.
#ifndef KECPP_DATASYNC_SYNCSTOPPER_H
#define KECPP_DATASYNC_SYNCSTOPPER_H

#include <atomic>

namespace KE::Instance {
class ChangeHub;
}

namespace KE::Service {

class ServerCalls;
class SyncState;

class SyncStopper {
 public:
  SyncStopper(SyncState& state, KE::Instance::ChangeHub& changes, std::atomic<bool>& stopRequested);
  SyncStopper(const SyncStopper&) = delete;
  SyncStopper& operator=(const SyncStopper&) = delete;

  // Whose calls are ended; without it none are out. Before any thread is inside.
  void SetServer(ServerCalls& calls) { server = &calls; }

  // KEDataSyncImpl::RequestStop, StopAtOnce, RenewStop and End.
  void Request();
  void RequestAtOnce();
  void Renew();
  bool End();

  // Waits until the loop that was asked to stop has left, or another thread has ended the stop.
  void AwaitLoop();

 private:
  void Announce();
  void CancelWait();

  SyncState& state;
  KE::Instance::ChangeHub& changes;
  std::atomic<bool>& stopRequested;
  ServerCalls* server = nullptr;
};

}  // namespace KE::Service

#endif
