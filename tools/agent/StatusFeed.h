// SPDX-License-Identifier: MIT
//
// What the status page shows, as events: the state of the sync, all hosts and machines once, and
// from then on what has changed. The inventory is copied for all pages together, twice a second at
// most.
//
// Thread safety: any thread, but a view belongs to one.
#ifndef KECPP_TOOLS_AGENT_STATUSFEED_H
#define KECPP_TOOLS_AGENT_STATUSFEED_H

#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "tools/agent/CacheGate.h"
#include "tools/agent/DaemonState.h"

namespace tools::agent {

// A host or a machine as one JSON object.
struct StatusRow {
  std::string id;  // class and key
  std::string json;
};
using StatusRows = std::vector<StatusRow>;  // sorted by id

class StatusFeed {
 public:
  // The arguments outlive the object.
  StatusFeed(CacheGate& gate, DaemonState& state);

  // One page's position in the feed.
  struct View {
    unsigned long long seen = 0;             // reports of the state that were shown
    std::shared_ptr<const StatusRows> rows;  // as shown; null before the first
  };

  // Waits until there is something new for the view, at most ten seconds, and gives it as the text
  // of server-sent events; a comment when there was nothing. Empty after the end.
  std::string Next(View& view);

 private:
  std::shared_ptr<const StatusRows> Rows(unsigned long long reports);

  CacheGate& gate;
  DaemonState& state;
  std::mutex mutex;
  std::shared_ptr<const StatusRows> rows;          // the last copy; guarded by `mutex`
  unsigned long long reportsCopied = 0;            // what it shows at least; likewise
  std::chrono::steady_clock::time_point copiedAt;  // likewise
};

}  // namespace tools::agent

#endif
