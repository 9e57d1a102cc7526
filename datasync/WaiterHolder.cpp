// SPDX-License-Identifier: MIT
#include "datasync/WaiterHolder.h"

#include "datasync/SyncState.h"

namespace KE::Service {

std::atomic<unsigned int> WaiterHolder::count{0};

void WaiterHolder::Release(SyncState& state) {
  if (waiter != nullptr) waiter->Signal();
  if (blocked != nullptr) state.Release(*blocked);
}

}  // namespace KE::Service
