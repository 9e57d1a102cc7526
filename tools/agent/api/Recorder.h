// SPDX-License-Identifier: MIT
//
// The thread that follows the inventory: what changes goes into the rows and into the journal. It
// runs only when something has changed. What the first fill brings is no change.
//
// Thread safety: none; the thread ends with the object.
#ifndef KECPP_TOOLS_AGENT_API_RECORDER_H
#define KECPP_TOOLS_AGENT_API_RECORDER_H

#include <kecpp/inventory.h>

#include <mutex>
#include <thread>

#include "tools/agent/api/Catalogues.h"
#include "tools/agent/api/Journal.h"

namespace tools::agent::api {

class Recorder {
 public:
  // Everything outlives the object.
  Recorder(const kecpp::Inventory& inventory, Catalogues& catalogues, Journal& journal);
  ~Recorder();
  Recorder(const Recorder&) = delete;
  Recorder& operator=(const Recorder&) = delete;

 private:
  void Run();
  void Take();
  void FollowAgain();
  void BeginAgain();
  bool HasEnded();

  const kecpp::Inventory& inventory;
  Catalogues& catalogues;
  Journal& journal;
  std::mutex mutex;
  bool ended = false;       // guarded by `mutex`
  kecpp::Follower changes;  // replaced and closed under `mutex`
  bool isFilled = false;    // what was known at first was taken
  std::thread thread;
};

}  // namespace tools::agent::api

#endif
