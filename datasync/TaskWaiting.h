// SPDX-License-Identifier: MIT
//
// Waits for a server task: with a separate filter on the task's state, its caller blocked inside
// SetupDataSync until the loop has seen the task end.
//
// Locks: takes the filter-table mutex and, inside it, that of the cache of tasks; neither is held
//   while the caller is blocked.
// Ownership: borrows what it is made with. Made for one call.
#ifndef KECPP_DATASYNC_TASKWAITING_H
#define KECPP_DATASYNC_TASKWAITING_H

#include <memory>

#include "foundation/KEString.h"
#include "foundation/KEWaiter.h"
#include "instance/KETypeCache.h"
#include "stub/classes/ManagedObjectReference.h"

namespace KE::Service {

class KEDataSync;
class SyncState;
struct TaskWait;
class Watches;

class TaskWaiting {
 public:
  TaskWaiting(Watches& watches, SyncState& state, KE::Instance::KETypeCache& types);

  // KEDataSync::WaitForTask, which sets the watch up through `sync`.
  bool WaitForTask(KEDataSync& sync, KELib::KEString& response, KELib::KEWaiter* waiter);

  // What the calling thread blocks on until the record of `filter`, which it has made, has seen its
  // task end. Null when it has done so already, and when the record has gone, and `filter` with it.
  std::shared_ptr<TaskWait> BlockOnTask(const KE::Stub::ManagedObjectReference* filter,
                                        unsigned long long stopsBefore);

 private:
  bool TakeTaskResult(KE::Stub::ManagedObjectReference& task);

  Watches& watches;
  SyncState& state;
  KE::Instance::KETypeCache& types;
};

}  // namespace KE::Service

#endif
