// SPDX-License-Identifier: MIT
#include "datasync/StaleObjects.h"

#include "datasync/DataSyncConstants.h"
#include "instance/KECacheGuard.h"
#include "instance/KEDataIterator.h"
#include "stub/classes/ClassNames.h"

namespace KE::Service {

namespace {

void Collect(KE::Instance::KETypeCache& cache, const char* typeName, StaleObjects::Ids& ids) {
  ids.clear();
  KELib::KEString type(typeName);
  KE::Instance::KEDataCache* data = cache.GetDataCache(type);
  if (data == nullptr) return;
  for (auto it = data->Iterator(); !it.End(); ++it) ids.emplace(it->key.Cstr());
}

}  // namespace

void StaleObjects::Forget() {
  phase = Phase::none;
  machines.clear();
  hosts.clear();
}

void StaleObjects::BeginWait(KE::Instance::KETypeCache& cache) {
  foundOne = false;
  if (phase != Phase::expected) return;
  KE::Instance::KECacheGuard caches(&cache);
  caches.LockComputerSystems();
  Collect(cache, KE::Stub::ZORBEL_VMComputerSystemClass, machines);
  Collect(cache, KE::Stub::ZORBEL_ORXComputerSystemClass, hosts);
  phase = machines.empty() && hosts.empty() ? Phase::none : Phase::begun;
}

void StaleObjects::Count(const KE::Stub::ManagedObjectReference& object) {
  Ids* ids = object.type.Equals(TypeVirtualMachine) ? &machines
             : object.type.Equals(TypeHostSystem)   ? &hosts
                                                    : nullptr;
  if (ids != nullptr && ids->erase(object.value.Cstr()) > 0) foundOne = true;
}

bool StaleObjects::EndSet() {
  if (phase == Phase::partial) return !foundOne || (machines.empty() && hosts.empty());
  if (phase != Phase::begun) return false;
  phase = Phase::partial;
  return machines.empty() && hosts.empty();
}

}  // namespace KE::Service
