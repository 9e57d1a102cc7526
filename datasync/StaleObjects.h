// SPDX-License-Identifier: MIT
//
// Finds the machines and hosts that are cached but gone on the server. When an update set was cut
// short the server is asked to report everything anew, and such a report says nothing of objects
// that left meanwhile: what it does not name is stale.
//
// A server may split its report over several answers and does not say which is the last. The report
// counts as over when an answer names no object that was still missing, or when the server has
// nothing more to say for a while.
//
// Thread safety: of the thread that runs a cycle; Expect and Forget also while no cycle runs.
// Memory: the identifiers of what is cached, from the begin of such a report to its end.
#ifndef KECPP_DATASYNC_STALEOBJECTS_H
#define KECPP_DATASYNC_STALEOBJECTS_H

#include <string>
#include <unordered_set>

#include "instance/KETypeCache.h"
#include "stub/classes/ManagedObjectReference.h"

namespace KE::Service {

class StaleObjects {
 public:
  using Ids = std::unordered_set<std::string>;

  // The next wait asks for everything.
  void Expect() { phase = Phase::expected; }

  // No report concerns what is cached from now on.
  void Forget();

  // A wait is about to be sent: when a report is expected, everything that is cached counts as
  // missing. Takes the mutexes of the two data caches. O(cached objects) then, O(1) otherwise.
  void BeginWait(KE::Instance::KETypeCache& cache);

  // The server has named an object.
  void Name(const KE::Stub::ManagedObjectReference& object) {
    if (phase == Phase::begun || phase == Phase::partial) Count(object);
  }

  // A set was applied whole. True when the report is over.
  bool EndSet();

  // A part of the report has come, and something is missing still.
  bool AwaitsMore() const { return phase == Phase::partial; }

  const Ids& Machines() const { return machines; }  // those missing still
  const Ids& Hosts() const { return hosts; }

 private:
  enum class Phase { none, expected, begun, partial };

  void Count(const KE::Stub::ManagedObjectReference& object);

  Phase phase = Phase::none;
  Ids machines, hosts;
  bool foundOne = false;  // the current set has named an object that was missing
};

}  // namespace KE::Service

#endif
