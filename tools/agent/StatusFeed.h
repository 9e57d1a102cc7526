// SPDX-License-Identifier: MIT
//
// What a status page shows, as server-sent events: the state of the connection, all hosts and
// machines once, and from then on what has changed.
//
// Thread safety: any thread, but a view belongs to one.
#ifndef KECPP_TOOLS_AGENT_STATUSFEED_H
#define KECPP_TOOLS_AGENT_STATUSFEED_H

#include <kecpp/inventory.h>

#include <atomic>
#include <chrono>
#include <string>

#include "tools/agent/ConnectionReport.h"

namespace tools::agent {

class StatusFeed {
 public:
  // The arguments outlive the object.
  StatusFeed(const kecpp::Inventory& inventory, const ConnectionReport& report);

  // One page's position in the feed. What its page was not sent yet is kept once for each object.
  struct View {
    kecpp::Follower changes;
    std::string state;                           // the event that was sent last
    std::chrono::steady_clock::time_point rest;  // no changes are taken before
  };
  View Open() const { return {inventory.Follow(), {}, {}}; }

  // Waits until there is something new for the view, at most ten seconds, and gives it as the text
  // of events; a comment when there was nothing. Changes come at most ten times a second, unless a
  // thousand objects wait. Empty after the end, and when the page has to begin again.
  std::string Next(View& view) const;

  // Lets every Next return within a quarter of a second.
  void End() { ended = true; }

 private:
  std::string StateNews(View& view) const;
  std::string RowNews(View& view) const;

  const kecpp::Inventory& inventory;
  const ConnectionReport& report;
  std::atomic<bool> ended{false};
};

}  // namespace tools::agent

#endif
