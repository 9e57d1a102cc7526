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
  tools::inventory::Lists all;
  for (const tools::Kind& kind : tools::Kinds()) all.push_back(&kind);
  return nlohmann::json::parse(tools::inventory::ToJson(tools::ReadInventory(cache, all), all));
}

#endif
