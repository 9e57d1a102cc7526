// SPDX-License-Identifier: MIT
#include "tools/agent/ConnectionReport.h"

#include <iostream>

#include "tools/common/CellText.h"

namespace tools::agent {
namespace {

constexpr int WAIT_SLICE_MS = 200;

void Print(const std::string& text) {
  std::cerr << "kecpp-agent: " + Printable(text) + '\n';
}

}  // namespace

void ConnectionReport::Follow(const kecpp::Inventory& inventory, const EndOfRun& end,
                              const Look& look) {
  while (!end.Ended()) {
    const kecpp::Status status = inventory.State();
    Note(status);
    look(status);
    inventory.WaitForState(status, std::chrono::milliseconds(WAIT_SLICE_MS));
  }
}

// Without a reason the first attempt is under way.
void ConnectionReport::Note(const kecpp::Status& status) {
  if (status.state == kecpp::Status::State::connected) return NoteConnected(status);
  if (status.reason == reported) return;
  reported = status.reason;
  const bool isLost = status.state == kecpp::Status::State::lost;
  const std::string text = isLost ? "connection lost (" + reported + ")" : reported;
  Print(text + ", connecting again");
  const std::lock_guard<std::mutex> guard(mutex);
  last = {text, std::chrono::system_clock::now()};
}

void ConnectionReport::NoteConnected(const kecpp::Status& status) {
  reported.clear();
  if (status.connections == connections) return;
  connections = status.connections;
  if (!status.authorizationFailure.empty()) {
    Print("cannot watch roles and privileges: " + status.authorizationFailure);
  }
}

Failure ConnectionReport::LastFailure() const {
  const std::lock_guard<std::mutex> guard(mutex);
  return last;
}

}  // namespace tools::agent
