// SPDX-License-Identifier: MIT
//
// Property methods: server methods without arguments whose answers fill caches. The server does not
// report changes of what they answer, so they are invoked again after every cycle of the loop.
#include <utility>

#include "datasync/DataSyncConstants.h"
#include "datasync/KEDataSyncImpl.h"
#include "datasync/PropertyList.h"
#include "datasync/SyncState.h"
#include "foundation/KEException.h"
#include "foundation/KEMutexGuard.h"
#include "foundation/Logger.h"
#include "http/HandleWait.h"
#include "instance/KECacheGuard.h"
#include "instance/KEDataCache.h"
#include "service/call/KEMethod.h"
#include "service/call/ServiceConstants.h"
#include "stub/classes/ClassNames.h"
#include "xml/KEXmlReader.h"

namespace KE::Service {

namespace {

using KE::Stub::ManagedObjectReference;
using KELib::KEMutexGuard;
using KELib::KEString;
using KELib::KEVector;

// How long a library's own call waits for a free connection.
constexpr int kHandleWaitMs = 2000;

bool Names(KEVector<KEString>& names, KEString& wanted) {
  return names.Index(wanted) < names.Count();
}

}  // namespace

// One invocation of a run: copies, since the record may go while the server is being asked.
struct KEDataSyncImpl::MethodCall {
  ManagedObjectReference record;
  ManagedObjectReference target;
  KEString name;
};

ManagedObjectReference* KEDataSyncImpl::RegisterMethods(ManagedObjectReference* root,
                                                        const PropertyList& sections,
                                                        KELib::KEWaiter* waiter, bool& created) {
  auto info = std::make_unique<MethodDataSyncInfo>();
  info->target.type = root->type;
  info->target.value = root->value;
  KEString type(TypePropertyMethod), value(root->value);
  for (unsigned int index : sections.methods) {
    info->methods.Add(sections.At(index));
    value += info->methods.Count() == 1 ? "/" : ",";
    value += sections.At(index);
  }
  info->reference.reset(KE::Stub::CreateManagedObjectReference(type, value));
  std::unique_ptr<WaiterHolder> holder;
  if (waiter != nullptr) {
    holder = std::make_unique<WaiterHolder>();
    holder->waiter = waiter;
  }

  KEMutexGuard guard(mutex.get());
  MethodDataSyncInfo* record = FindMethodsNoLock(*info->reference);
  if (record == nullptr) {
    CreateCaches(sections, info->cacheTypes);
    ManagedObjectReference* key = info->reference.get();
    methodInfos->Insert(key, info.get());
    record = info.release();
    created = true;
  }
  if (holder != nullptr) {
    ReleaseWaiterNoLock(record->waiter);  // an older one had its data when its own call returned
    record->waiter = std::move(holder);
  }
  return record->reference.get();
}

MethodDataSyncInfo* KEDataSyncImpl::FindMethodsNoLock(ManagedObjectReference& ref) {
  ManagedObjectReference* key = &ref;
  MethodDataSyncInfo** found = methodInfos->Get(key);
  return found != nullptr ? *found : nullptr;
}

std::vector<KEDataSyncImpl::MethodCall> KEDataSyncImpl::CallsToMake() {
  std::vector<MethodCall> calls;
  KEMutexGuard guard(mutex.get());
  for (auto it = methodInfos->Begin(); !it.End(); ++it) {
    MethodDataSyncInfo* info = it->value;
    if (info == nullptr) continue;
    for (unsigned int i = 0; i < info->methods.Count(); ++i) {
      MethodCall& call = calls.emplace_back();
      call.record.value = info->reference->value;
      call.target.type = info->target.type;
      call.target.value = info->target.value;
      call.name = info->methods[i];
    }
  }
  return calls;
}

void KEDataSyncImpl::PropMethodToCache() {
  KEMutexGuard run(methodRun.get());
  bool applied = false;
  for (MethodCall& call : CallsToMake()) {
    KEString response;
    {
      const KELib::Http::HandleWait limits(kHandleWaitMs, &stopRequested);
      method->Invoke(targetNamespace, call.name.Cstr(), call.target.type.Cstr(),
                     call.target.value.Cstr(), response);
    }
    if (response.Empty()) continue;
    ApplyMethodAnswer(call, response);
    applied = true;
  }
  ReleaseMethodWaiters();
  // Counted besides the update set that they follow: who read after that set reads again.
  if (applied) state->NoteApplied(!HasFilters());
}

void KEDataSyncImpl::RunMethodsAtSetup() {
  try {
    PropMethodToCache();
  } catch (const KELib::Exception& e) {
    KELib::Logging::Log(nullptr, KELib::Logging::LOG_LEVEL_VERBOSE,
                        "Exception Invoking property methods : %s", e.What());
    throw;
  }
}

void KEDataSyncImpl::ApplyMethodAnswer(MethodCall& call, KEString& response) {
  KELib::Xml::KEXmlReader reader(response, false, 0);
  UpdateInfo ui(ReturnVal, ReturnVal);
  ui.name = call.name;
  KEMutexGuard guard(mutex.get());
  if (FindMethodsNoLock(call.record) == nullptr) return;  // stopped while the server was asked
  KE::Instance::KECacheGuard caches(typeCache.get());
  caches.LockAuthorization();
  UpdateComplexType(ui, reader);
}

void KEDataSyncImpl::ReleaseMethodWaiters() {
  KEMutexGuard guard(mutex.get());
  for (auto it = methodInfos->Begin(); !it.End(); ++it) {
    if (it->value != nullptr) ReleaseWaiterNoLock(it->value->waiter);
  }
}

void KEDataSyncImpl::DestroyPropMethod(ManagedObjectReference* ref) {
  if (ref == nullptr) return;
  KEMutexGuard guard(mutex.get());
  MethodDataSyncInfo* info = FindMethodsNoLock(*ref);
  if (info == nullptr) return;
  ReleaseWaiterNoLock(info->waiter);
  // Everything that needs memory comes before the first change.
  KEVector<KEString> cacheTypes;
  for (unsigned int i = 0; i < info->cacheTypes.Count(); ++i) cacheTypes.Add(info->cacheTypes[i]);
  KE::Instance::KECacheGuard caches(typeCache.get());
  caches.LockAll();  // deleting a stub writes into its partners, whichever caches they live in
  // The map's key is the record's own reference, which must outlive the removal.
  const std::unique_ptr<ManagedObjectReference> reference = std::move(info->reference);
  ManagedObjectReference* key = reference.get();
  methodInfos->Remove(key);
  DropUnnamedStubsNoLock(cacheTypes);
}

bool KEDataSyncImpl::IsCacheNamedNoLock(KEString& type) {
  for (auto it = filters->Begin(); !it.End(); ++it) {
    if (it->value != nullptr && Names(it->value->cacheTypes, type)) return true;
  }
  for (auto it = methodInfos->Begin(); !it.End(); ++it) {
    if (it->value != nullptr && Names(it->value->cacheTypes, type)) return true;
  }
  return false;
}

void KEDataSyncImpl::DropUnnamedStubsNoLock(KEVector<KEString>& cacheTypes) {
  for (unsigned int i = 0; i < cacheTypes.Count(); ++i) {
    if (IsCacheNamedNoLock(cacheTypes[i])) continue;
    KE::Instance::KEDataCache* cache = typeCache->GetDataCache(cacheTypes[i]);
    if (cache != nullptr) cache->ClearNoLock();
  }
}

void KEDataSyncImpl::CleanupSessionUserPermissions() {
  try {
    KEMutexGuard guard(mutex.get());
    KE::Instance::KECacheGuard caches(typeCache.get());
    caches.LockAuthorization();
    for (const char* name : {KE::Stub::Zorbel_RoleClass, KE::Stub::Zorbel_PrivilegeClass,
                             KE::Stub::Zorbel_IdentityClass}) {
      KEString type(name);
      KE::Instance::KEDataCache* cache = typeCache->GetDataCache(type);
      if (cache != nullptr) cache->ClearNoLock();
    }
  } catch (const std::exception& e) {
    KELib::Logging::Log(nullptr, KELib::Logging::LOG_LEVEL_VERBOSE,
                        "Could not empty the permission caches: %s", e.what());
  } catch (const KELib::Throwable& e) {
    KELib::Logging::Log(nullptr, KELib::Logging::LOG_LEVEL_VERBOSE,
                        "Could not empty the permission caches: %s", e.What());
  }
}

}  // namespace KE::Service
