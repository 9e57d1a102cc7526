// SPDX-License-Identifier: MIT
#include "tools/agent/DaemonState.h"

namespace tools::agent {
namespace {

long long Now() {
  return std::chrono::duration_cast<std::chrono::milliseconds>(
             std::chrono::system_clock::now().time_since_epoch())
      .count();
}

}  // namespace

// The caller holds the mutex.
void DaemonState::Note() {
  ++report.times;
  changed.notify_all();
}

void DaemonState::Connected() {
  std::lock_guard<std::mutex> lock(mutex);
  report.connected = true;
  ++report.connections;
  report.sets = 0;
  report.consecutiveFailures = 0;
  report.lastUpdate = Now();
  Note();
}

void DaemonState::Lost(const std::string& reason) {
  std::lock_guard<std::mutex> lock(mutex);
  report.connected = false;
  report.lastFailure = Now();
  report.lastFailureText = reason;
  Note();
}

void DaemonState::Update(const KE::Service::KESyncStatus& status) {
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

DaemonReport DaemonState::Report() {
  std::lock_guard<std::mutex> lock(mutex);
  return report;
}

bool DaemonState::WaitForChange(unsigned long long& seen, std::chrono::milliseconds limit) {
  std::unique_lock<std::mutex> lock(mutex);
  changed.wait_for(lock, limit, [&] { return ended || report.times > seen; });
  if (ended || report.times <= seen) return false;
  seen = report.times;
  return true;
}

void DaemonState::End() {
  std::lock_guard<std::mutex> lock(mutex);
  ended = true;
  changed.notify_all();
}

bool DaemonState::Ended() {
  std::lock_guard<std::mutex> lock(mutex);
  return ended;
}

}  // namespace tools::agent
