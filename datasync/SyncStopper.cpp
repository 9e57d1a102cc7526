// SPDX-License-Identifier: MIT
#include "datasync/SyncStopper.h"

#include <chrono>

#include "datasync/ServerCalls.h"
#include "datasync/SyncState.h"
#include "foundation/Logger.h"
#include "instance/ChangeHub.h"

namespace KE::Service {

namespace {

// How long a stopped loop is given before its wait is cancelled again.
constexpr int kStopStepMs = 100;

}  // namespace

SyncStopper::SyncStopper(SyncState& syncState, KE::Instance::ChangeHub& hub,
                         std::atomic<bool>& stop)
    : state(syncState), changes(hub), stopRequested(stop) {}

void SyncStopper::Announce() {
  state.AnnounceStop(stopRequested);
  changes.NoteStop(stopRequested);
}

void SyncStopper::CancelWait() {
  if (state.waitOut) server->CancelWaitToStop();
}

void SyncStopper::Request() {
  Announce();
  CancelWait();
}

// In this order: a watch that ends the stop lets calls pass afterwards.
void SyncStopper::RequestAtOnce() {
  if (server != nullptr) server->Transfers().Interrupt();
  Announce();
}

void SyncStopper::Renew() {
  if (!stopRequested) Request();
}

bool SyncStopper::End() {
  using Clock = std::chrono::steady_clock;
  const auto begin = Clock::now();
  const auto interruptAt = begin + std::chrono::seconds(1);
  const auto giveUpAt = begin + std::chrono::seconds(75);
  state.RefuseEntries();
  Request();
  bool interrupted = false;
  bool left = state.WaitUntilLeft(kStopStepMs);
  while (!left && Clock::now() < giveUpAt) {
    if (Clock::now() < interruptAt) {
      CancelWait();  // an earlier cancel may have overtaken the wait that it was for
    } else if (server != nullptr) {
      // The cancel did not help, or could not be sent: the peer does not answer.
      server->Transfers().Interrupt();
      interrupted = true;
    }
    left = state.WaitUntilLeft(kStopStepMs);
  }
  if (interrupted) server->Transfers().Resume();  // what the caller asks next is not cut
  if (!left) {
    KELib::Logging::Log(nullptr, KELib::Logging::LOG_LEVEL_ERROR,
                        "Data sync could not be stopped: a thread is still inside.");
  }
  return left;
}

// Who asked for the stop has cancelled the wait once, maybe before it was sent. Another thread may
// revive the data sync first: its loop is not waited for.
void SyncStopper::AwaitLoop() {
  while (stopRequested && !state.WaitUntilIdle(kStopStepMs)) CancelWait();
}

}  // namespace KE::Service
