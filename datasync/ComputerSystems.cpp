// SPDX-License-Identifier: MIT
#include "datasync/ComputerSystems.h"

#include <memory>

#include "stub/base/KEStubRef.h"
#include "stub/base/StubCast.h"
#include "stub/classes/ClassNames.h"
#include "stub/classes/ZORBEL_ORXComputerSystem.h"
#include "stub/classes/ZORBEL_VMComputerSystem.h"

namespace KE::Service {

namespace {

using KE::Instance::KEDataCache;
using KE::Stub::ManagedObjectReference;
using KE::Stub::ZORBEL_ORXComputerSystem;
using KE::Stub::ZORBEL_VMComputerSystem;
using KELib::KEString;
using KELib::Stub::StubCast;

KELib::Stub::KEStubBase* Find(KEDataCache& cache, KEString& key) {
  KELib::Stub::KEStubRef ref;
  cache.GetVal(key, ref);
  return ref.GetData();
}

template <typename Stub>
Stub* FindOrFile(KEDataCache& cache, ManagedObjectReference& object, Stub* (*create)()) {
  if (auto* found = static_cast<Stub*>(Find(cache, object.value))) return found;
  std::unique_ptr<Stub> stub(create());
  const unsigned int length = object.value.Length();
  stub->Name.AssignExact(object.value.Cstr(), length);
  stub->MoRef.type = object.type;
  stub->MoRef.value.AssignExact(object.value.Cstr(), length);
  cache.SetVal(object.value, stub.get());
  return stub.release();
}

}  // namespace

ComputerSystems::ComputerSystems(KE::Instance::KETypeCache& cache)
    : types(cache),
      generation(cache.Generation()),
      machineType(KE::Stub::ZORBEL_VMComputerSystemClass),
      hostType(KE::Stub::ZORBEL_ORXComputerSystemClass),
      machines(cache.GetDataCache(machineType)),
      hosts(cache.GetDataCache(hostType)) {}

void ComputerSystems::Refresh() {
  const unsigned int now = types.Generation();
  if (now == generation) return;
  generation = now;  // first: what changes after this shows next time
  machines = types.GetDataCache(machineType);
  hosts = types.GetDataCache(hostType);
}

// A data cache is unlinked by a thread that holds its mutex: one that is linked once its mutex is
// taken stays so.
void ComputerSystems::Lock(KE::Instance::KECacheGuard& guard) {
  for (;;) {
    Refresh();
    guard.Lock(machines);
    guard.Lock(hosts);
    if (types.Generation() == generation) return;
    guard.Unlock();
  }
}

ZORBEL_VMComputerSystem* ComputerSystems::FindMachine(const KELib::Xml::XmlSlice& id) {
  if (machines == nullptr) return nullptr;
  id.CopyTo(key, keyRoom);
  return StubCast<ZORBEL_VMComputerSystem>(Find(*machines, key));
}

ZORBEL_ORXComputerSystem* ComputerSystems::FindHost(const KELib::Xml::XmlSlice& id) {
  if (hosts == nullptr) return nullptr;
  id.CopyTo(key, keyRoom);
  return StubCast<ZORBEL_ORXComputerSystem>(Find(*hosts, key));
}

ZORBEL_VMComputerSystem* ComputerSystems::Machine(ManagedObjectReference& object) {
  KEDataCache& cache = machines != nullptr ? *machines : types.Existing(machineType);
  return FindOrFile(cache, object, &KE::Stub::CreateZORBEL_VMComputerSystem);
}

ZORBEL_ORXComputerSystem* ComputerSystems::Host(ManagedObjectReference& object) {
  KEDataCache& cache = hosts != nullptr ? *hosts : types.Existing(hostType);
  return FindOrFile(cache, object, &KE::Stub::CreateZORBEL_ORXComputerSystem);
}

}  // namespace KE::Service
