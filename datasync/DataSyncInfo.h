// SPDX-License-Identifier: MIT
//
// The record of one property filter that the data sync watches.
//
// Thread safety: guarded by the data sync's filter-table mutex.
// Ownership: the filter table owns its records; a record owns its filter's reference and its waiter
//   holder, never the waiter itself.
#ifndef KECPP_DATASYNC_DATASYNCINFO_H
#define KECPP_DATASYNC_DATASYNCINFO_H

#include <memory>
#include <thread>
#include <vector>

#include "foundation/KEExport.h"
#include "foundation/KEString.h"
#include "foundation/KEVector.h"
#include "stub/classes/ManagedObjectReference.h"

namespace KE::Service {

struct MethodDataSyncInfo;
struct WaiterHolder;

struct KECPP_API DataSyncInfo {
  DataSyncInfo();
  ~DataSyncInfo();
  DataSyncInfo(const DataSyncInfo&) = delete;
  DataSyncInfo& operator=(const DataSyncInfo&) = delete;

  bool received = false;                        // the update set being applied carried this filter
  bool isTask = false;                          // the list was the one that watches a task
  std::unique_ptr<WaiterHolder> waiter;         // who waits for the filter's first data; often null
  KELib::KEVector<KELib::KEString> cacheTypes;  // names of the "_co_" section
  bool taskPending = false;                     // the watched task has not ended yet

  std::unique_ptr<KE::Stub::ManagedObjectReference>
      reference;  // the filter, as the server named it

  std::thread::id maker = std::this_thread::get_id();  // who set the watch up
  std::vector<MethodDataSyncInfo*> methods;            // that its list named too; not owned
  unsigned int classes = 0;                            // that it watches (StaleObjects::Classes)
  bool held = false;  // the first data is there, but the waiter waits until the classes are true
};

}  // namespace KE::Service

#endif
