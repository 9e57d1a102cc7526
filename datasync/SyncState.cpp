// SPDX-License-Identifier: MIT
#include "datasync/SyncState.h"

#include <chrono>

#include "foundation/KEException.h"
#include "foundation/KEMutexGuard.h"
#include "foundation/KETime.h"

namespace KE::Service {

namespace {

using KELib::KEMutexGuard;

// The innermost stay of the calling thread, so that a thread which ends the process finds its own.
thread_local SyncState::CallScope* innermostScope = nullptr;

using Clock = std::chrono::steady_clock;

// Milliseconds left until `deadline`, never negative.
long long Left(Clock::time_point deadline) {
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
  return left.count() > 0 ? left.count() + 1 : 0;
}

}  // namespace

SyncState::CallScope::CallScope(SyncState& owner) : state(&owner), outer(innermostScope) {
  KEMutexGuard guard(&owner.mutex);
  if (owner.refusing) throw KELib::SystemException("The data sync is being stopped.");
  ++owner.callersInside;
  innermostScope = this;
}

SyncState::CallScope::~CallScope() {
  innermostScope = outer;
  if (state == nullptr) return;
  KEMutexGuard guard(&state->mutex);
  if (--state->callersInside == 0) state->changed.Broadcast();
}

bool SyncState::BeginFirstCycle(const std::atomic<bool>& stopRequested) {
  KEMutexGuard guard(&mutex);
  while ((phase == Phase::firstCycle || phase == Phase::ending) && !stopRequested) {
    changed.Wait(mutex, -1);
  }
  if (phase != Phase::idle || stopRequested) return false;
  phase = Phase::firstCycle;
  return true;
}

void SyncState::SetPhase(Phase next) {
  KEMutexGuard guard(&mutex);
  phase = next;
  status.loopRunning = next == Phase::running;
  changed.Broadcast();
}

SyncState::Phase SyncState::GetPhase() {
  KEMutexGuard guard(&mutex);
  return phase;
}

bool SyncState::WaitUntilIdle(int milliseconds) {
  const auto deadline = Clock::now() + std::chrono::milliseconds(milliseconds);
  KEMutexGuard guard(&mutex);
  while (phase != Phase::idle && !refusing) {
    const long long left = Left(deadline);
    if (left == 0) return false;
    changed.Wait(mutex, left);
  }
  if (refusing) throw KELib::SystemException("The data sync is being stopped.");
  return true;
}

void SyncState::ThreadLeaves() {
  SetPhase(Phase::idle);
}

void SyncState::LeaveForExit(bool isSyncThread) {
  KEMutexGuard guard(&mutex);
  for (CallScope* scope = innermostScope; scope != nullptr; scope = scope->outer) {
    if (scope->state != this) continue;
    scope->state = nullptr;
    --callersInside;
  }
  if (isSyncThread || phase == Phase::firstCycle) phase = Phase::idle;
  status.loopRunning = phase == Phase::running;
  changed.Broadcast();
}

void SyncState::RefuseEntries() {
  KEMutexGuard guard(&mutex);
  refusing = true;
  changed.Broadcast();
}

void SyncState::AcceptEntries() {
  KEMutexGuard guard(&mutex);
  refusing = false;
}

void SyncState::AnnounceStop(std::atomic<bool>& stopRequested) {
  KEMutexGuard guard(&mutex);
  stopRequested = true;
  ++stops;
  changed.Broadcast();
}

unsigned long long SyncState::Stops() {
  KEMutexGuard guard(&mutex);
  return stops;
}

bool SyncState::WaitUntilLeft(int milliseconds) {
  const auto deadline = Clock::now() + std::chrono::milliseconds(milliseconds);
  KEMutexGuard guard(&mutex);
  while (callersInside > 0 || phase != Phase::idle) {
    const long long left = Left(deadline);
    if (left == 0) return false;
    changed.Wait(mutex, left);
  }
  return true;
}

bool SyncState::Pause(int milliseconds, const std::atomic<bool>& stopRequested) {
  const auto deadline = Clock::now() + std::chrono::milliseconds(milliseconds);
  KEMutexGuard guard(&mutex);
  while (!stopRequested) {
    const long long left = Left(deadline);
    if (left == 0) return true;
    changed.Wait(mutex, left);
  }
  return false;
}

void SyncState::Release(TaskWait& wait) {
  KEMutexGuard guard(&mutex);
  wait.released = true;
  changed.Broadcast();
}

void SyncState::WaitForRelease(TaskWait& wait, const std::atomic<bool>& stopRequested) {
  KEMutexGuard guard(&mutex);
  const unsigned long long stopsBefore = stops;
  while (!wait.released && !stopRequested && stops == stopsBefore && phase != Phase::idle) {
    changed.Wait(mutex, -1);
  }
}

void SyncState::NoteVersion(const KELib::KEString& version) {
  KEMutexGuard guard(&mutex);
  status.version = version;
}

// The mutex is free when the readers wake, so that they need not wait a second time. The caller is
// inside, so the state stays.
void SyncState::NoteApplied(bool isFill) {
  KEMutexGuard guard(&mutex);
  ++status.setsApplied;
  if (isFill) status.firstFillDone = true;
  guard.Release();
  changed.Broadcast();
}

void SyncState::NoteGoodCycle() {
  KEMutexGuard guard(&mutex);
  status.consecutiveFailures = 0;
}

unsigned int SyncState::NoteFailure(const char* text) noexcept {
  KEMutexGuard guard(&mutex);
  ++status.consecutiveFailures;
  try {
    status.lastFailure = text;
    status.lastFailureTime = KELib::GetTime();
  } catch (...) {
    // Out of memory: the number of failures is kept, their text is the older one.
  }
  return status.consecutiveFailures;
}

void SyncState::NoteStopped() {
  KEMutexGuard guard(&mutex);
  status.firstFillDone = false;
  status.version.Clear();
}

void SyncState::GetStatus(KESyncStatus& out) {
  KEMutexGuard guard(&mutex);
  out = status;
}

bool SyncState::WaitForChange(unsigned long long& seen, int milliseconds,
                              const std::atomic<bool>& stopRequested) {
  const auto deadline = Clock::now() + std::chrono::milliseconds(milliseconds);
  KEMutexGuard guard(&mutex);
  const unsigned long long stopsBefore = stops;
  while (status.setsApplied <= seen) {
    if (stopRequested || stops != stopsBefore) return false;
    const long long left = milliseconds > 0 ? Left(deadline) : -1;
    if (left == 0) return false;
    changed.Wait(mutex, left);
  }
  if (stopRequested || stops != stopsBefore) return false;
  seen = status.setsApplied;
  return true;
}

}  // namespace KE::Service
