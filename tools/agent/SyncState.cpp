// SPDX-License-Identifier: MIT
#include "tools/agent/SyncState.h"

namespace cimxml {
namespace {

long long Now() {
  return std::chrono::duration_cast<std::chrono::milliseconds>(
             std::chrono::system_clock::now().time_since_epoch())
      .count();
}

}  // namespace

// The caller holds the mutex.
void SyncState::Note() {
  ++report.times;
  changed.notify_all();
}

void SyncState::Connected() {
  std::lock_guard<std::mutex> lock(mutex);
  report.connected = true;
  ++report.connections;
  report.sets = 0;
  report.consecutiveFailures = 0;
  report.lastUpdate = Now();
  Note();
}

void SyncState::Lost(const std::string& reason) {
  std::lock_guard<std::mutex> lock(mutex);
  report.connected = false;
  report.lastFailure = Now();
  report.lastFailureText = reason;
  Note();
}

void SyncState::Update(const KE::Service::KESyncStatus& status) {
  std::lock_guard<std::mutex> lock(mutex);
  const bool sameSets = status.setsApplied == report.sets;
  if (sameSets && status.consecutiveFailures == report.consecutiveFailures) return;
  if (!sameSets) report.lastUpdate = Now();
  report.sets = status.setsApplied;
  report.consecutiveFailures = status.consecutiveFailures;
  if (status.lastFailureTime != 0) {
    report.lastFailure = status.lastFailureTime / 1000;
    report.lastFailureText = status.lastFailure.Cstr();
  }
  report.version = status.version.Cstr();
  Note();
}

SyncReport SyncState::Report() {
  std::lock_guard<std::mutex> lock(mutex);
  return report;
}

bool SyncState::WaitForChange(unsigned long long& seen, std::chrono::milliseconds limit) {
  std::unique_lock<std::mutex> lock(mutex);
  changed.wait_for(lock, limit, [&] { return ended || report.times > seen; });
  if (ended || report.times <= seen) return false;
  seen = report.times;
  return true;
}

void SyncState::End() {
  std::lock_guard<std::mutex> lock(mutex);
  ended = true;
  changed.notify_all();
}

bool SyncState::Ended() {
  std::lock_guard<std::mutex> lock(mutex);
  return ended;
}

}  // namespace cimxml
