// SPDX-License-Identifier: MIT
//
// Copies the caches of a data sync. This is the pattern for every reader of the library: take the
// mutexes of a linked group in the library's order (roles, privileges, identities; machines,
// hosts), copy, let go, and work on the copy.
//
// Thread safety: any thread that holds no cache's mutex. The sync thread waits meanwhile for as
//   long as the copying takes; nothing here waits for the network.
#ifndef KECPP_TOOLS_COMMON_CACHEREADER_H
#define KECPP_TOOLS_COMMON_CACHEREADER_H

#include <kecpp.h>

#include "tools/common/InventoryCopy.h"

namespace tools {

// Hosts, machines and their links. Linear in their number but for the sorting.
Systems ReadSystems(KE::Instance::KETypeCache& cache);

// Roles, privileges, identities and their memberships.
Authorization ReadAuthorization(KE::Instance::KETypeCache& cache);

// The number of machines cached so far.
unsigned CountMachines(KE::Instance::KETypeCache& cache);

}  // namespace tools

#endif
