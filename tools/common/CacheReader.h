// SPDX-License-Identifier: MIT
//
// Copies the caches of a data sync. This is the pattern for every reader of the library: take the
// mutexes of a linked group in the library's order (roles, privileges, identities; machines,
// hosts), copy, let go, and work on the copy.
//
// Thread safety: any thread that holds no cache's mutex. The sync thread waits for as long as the
//   copying takes; nothing here waits for the network.
#ifndef KECPP_TOOLS_COMMON_CACHEREADER_H
#define KECPP_TOOLS_COMMON_CACHEREADER_H

#include <kecpp.h>

#include <list>
#include <vector>

#include "tools/common/InventoryCopy.h"
#include "tools/common/Kinds.h"

namespace tools {

// The data cache of a class; null until the first watch that names the class was set up.
KE::Instance::KEDataCache* FindCache(KE::Instance::KETypeCache& cache, const ClassRow& type);

// Holds the mutexes of all data caches of a group, taken in the library's order.
class GroupLock {
 public:
  GroupLock(KE::Instance::KETypeCache& cache, Group group);

 private:
  std::list<KELib::KEMutexGuard> guards;
};

// Copies the groups to which these kinds belong. Linear in the number of objects and links.
InventoryCopy ReadInventory(KE::Instance::KETypeCache& cache,
                            const std::vector<const Kind*>& kinds);

// The number of machines cached so far.
unsigned CountMachines(KE::Instance::KETypeCache& cache);

}  // namespace tools

#endif
