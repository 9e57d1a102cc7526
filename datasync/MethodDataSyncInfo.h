// SPDX-License-Identifier: MIT
//
// The record of one set of property methods: server methods whose answers fill caches.
//
// Thread safety: guarded by the data sync's filter-table mutex.
// Ownership: the method table owns its records; a record owns its reference and its waiter holder.
#ifndef KECPP_DATASYNC_METHODDATASYNCINFO_H
#define KECPP_DATASYNC_METHODDATASYNCINFO_H

#include <chrono>
#include <memory>
#include <vector>

#include "foundation/KEExport.h"
#include "foundation/KEString.h"
#include "foundation/KEVector.h"
#include "stub/classes/ManagedObjectReference.h"

namespace KE::Service {

struct WaiterHolder;

// What became of a method's last call.
struct KECPP_API MethodOutcome {
  enum class Last { none, answered, failed };
  Last last = Last::none;
  KELib::KEString failure;                          // text of the failure
  std::chrono::steady_clock::time_point notBefore;  // a cycle before leaves a failed one out
  std::chrono::steady_clock::time_point due;        // the loop ends its wait to call a failed one
  std::chrono::milliseconds pause{};                // from a failure to `due`; 0: it has not failed
};

struct KECPP_API MethodDataSyncInfo {
  MethodDataSyncInfo();
  ~MethodDataSyncInfo();
  MethodDataSyncInfo(const MethodDataSyncInfo&) = delete;
  MethodDataSyncInfo& operator=(const MethodDataSyncInfo&) = delete;

  KE::Stub::ManagedObjectReference target;      // the object that the methods are invoked on
  KELib::KEVector<KELib::KEString> methods;     // invoked in this order, without arguments
  KELib::KEVector<KELib::KEString> cacheTypes;  // names of the "_co_" section
  std::unique_ptr<WaiterHolder> waiter;         // released when all have answered; often null

  // Type "PropertyMethod", value: the target's value, "/" and the method names, comma-separated.
  std::unique_ptr<KE::Stub::ManagedObjectReference> reference;

  std::vector<MethodOutcome> outcomes;  // of each of `methods`
  unsigned int lists = 0;  // how many lists without properties named the methods and go on
};

}  // namespace KE::Service

#endif
