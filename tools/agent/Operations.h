// SPDX-License-Identifier: MIT
//
// Answers CIM operations from the inventory.
//
// Thread safety: any number of threads may answer at once.
#ifndef KECPP_TOOLS_AGENT_OPERATIONS_H
#define KECPP_TOOLS_AGENT_OPERATIONS_H

#include <memory>
#include <string>

#include "tools/agent/Backlog.h"
#include "tools/agent/Call.h"
#include "tools/agent/InventoryGate.h"
#include "tools/agent/Limits.h"
#include "tools/agent/PullSessions.h"
#include "tools/agent/Reply.h"
#include "tools/agent/Request.h"
#include "tools/agent/StoredInstances.h"
#include "tools/agent/Turns.h"

namespace tools::agent {

class Operations {
 public:
  // Gate and source outlive the object, which outlives the replies that it gives.
  Operations(const InventoryGate& gate, StoredSource& stored, const Limits& limits = {});

  // The operation that a request asks for, "InvokeMethod" for methods of classes, "unknown" for one
  // that is not served.
  static const char* NameOf(const Request& request);

  // An operation that reads the inventory: waits for the first fill, or for as long as readers wait
  // at most.
  void Await(const Request& request) const;

  // The reply message, with its first piece made; an operation that fails is answered with its CIM
  // status. `host` is the name that absolute object paths have. Throws NotReady while there is no
  // inventory, and when clients that do not take their replies have left no room for too long.
  // Memory is a piece, and the keys of what one object is linked to.
  // `client` is who asks: the same number for the same credentials.
  std::unique_ptr<Reply> Answer(const Request& request, const std::string& host,
                                std::size_t client = 0) const;

  // The most memory that replies have taken at a time.
  std::size_t PeakBytes() const { return backlog.Peak(); }

 private:
  std::unique_ptr<Reply> Whole(const Call& call, Backlog::Clock::time_point end) const;
  std::unique_ptr<Reply> Portion(const Call& call, Backlog::Clock::time_point end) const;

  const InventoryGate& gate;
  StoredSource& stored;
  const std::chrono::seconds patience;
  mutable Backlog backlog;
  // Copying and encoding many objects does not wait for anything: more threads than processors
  // would only be interrupted while they hold the library's locks, and keep changes waiting.
  mutable Turns turns;
  mutable PullSessions pulls;
};

}  // namespace tools::agent

#endif
