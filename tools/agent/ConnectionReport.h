// SPDX-License-Identifier: MIT
//
// Says on standard error when the daemon is not reached, its connection is lost or roles are not
// shown: each once, until the next connection.
//
// Thread safety: one thread uses it; LastFailure from any.
#ifndef KECPP_TOOLS_AGENT_CONNECTIONREPORT_H
#define KECPP_TOOLS_AGENT_CONNECTIONREPORT_H

#include <kecpp/inventory.h>

#include <chrono>
#include <functional>
#include <mutex>
#include <string>

#include "tools/common/EndOfRun.h"

namespace tools::agent {

struct Failure {
  std::string text;  // empty: none yet
  std::chrono::system_clock::time_point time;
};

class ConnectionReport {
 public:
  // Returns at the end of the run. Until then it calls `look` with each new state, and several
  // times a second.
  using Look = std::function<void(const kecpp::Status& status)>;
  void Follow(const kecpp::Inventory& inventory, const EndOfRun& end, const Look& look);

  // The last one, also when there has been another connection since.
  Failure LastFailure() const;

 private:
  void Note(const kecpp::Status& status);
  void NoteConnected(const kecpp::Status& status);

  unsigned long long connections = 0;  // noted so far
  std::string reported;                // since the last connection
  mutable std::mutex mutex;
  Failure last;  // guarded by `mutex`
};

}  // namespace tools::agent

#endif
