// SPDX-License-Identifier: MIT
//
// What the caches hold, in the form in which kecpp-inventory prints it and the simulated daemon
// tells its truth. Takes the caches' mutexes; any thread.
#ifndef KECPP_TESTS_SUPPORT_READCACHES_H
#define KECPP_TESTS_SUPPORT_READCACHES_H

#include <nlohmann/json.hpp>

#include "tools/common/CacheReader.h"
#include "tools/inventory/InventoryJson.h"

inline nlohmann::json ReadCaches(KE::Instance::KETypeCache& cache) {
  tools::InventoryCopy all;
  all.systems = tools::ReadSystems(cache);
  all.authorization = tools::ReadAuthorization(cache);
  return nlohmann::json::parse(tools::inventory::ToJson(all, {true, true, true, true, true}));
}

#endif
