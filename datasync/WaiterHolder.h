// SPDX-License-Identifier: MIT
//
// Holds a caller's waiter for a record until the record's first data is there.
//
// Thread safety: guarded by the data sync's filter-table mutex, under which Signal runs.
#ifndef KECPP_DATASYNC_WAITERHOLDER_H
#define KECPP_DATASYNC_WAITERHOLDER_H

#include <atomic>
#include <memory>

#include "foundation/KEExport.h"
#include "foundation/KEWaiter.h"

namespace KE::Service {

class SyncState;
struct TaskWait;

struct KECPP_API WaiterHolder {
  WaiterHolder() { ++count; }
  ~WaiterHolder() { --count; }
  WaiterHolder(const WaiterHolder&) = delete;
  WaiterHolder& operator=(const WaiterHolder&) = delete;

  // How many there are in the process: mostly none, and then nobody has to be looked for. From any
  // thread.
  static unsigned int Count() { return count; }

  KELib::KEWaiter* waiter = nullptr;  // the caller's; not owned
  std::shared_ptr<TaskWait> blocked;  // set while the caller's thread is blocked for its task

  // Signals the waiter and lets a blocked thread go. The holder is of no use afterwards.
  void Release(SyncState& state);

 private:
  static std::atomic<unsigned int> count;
};

}  // namespace KE::Service

#endif
