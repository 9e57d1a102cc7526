// SPDX-License-Identifier: MIT
#include "datasync/Watches.h"

#include <algorithm>
#include <thread>
#include <utility>

#include "datasync/DataSyncConstants.h"
#include "datasync/PropertyList.h"
#include "datasync/ServerCalls.h"
#include "datasync/SyncState.h"
#include "datasync/WaiterHolder.h"
#include "foundation/KEException.h"
#include "foundation/KEMutexGuard.h"
#include "foundation/Logger.h"
#include "instance/KECacheGuard.h"
#include "instance/KEDataCache.h"
#include "stub/classes/ClassNames.h"
#include "xml/KEXmlBuffer.h"

namespace KE::Service {

namespace {

using KE::Stub::ManagedObjectReference;
using KELib::KEMutexGuard;
using KELib::KEString;
using KELib::KEVector;
using KELib::Logging::Log;
using KELib::Logging::LOG_LEVEL_VERBOSE;

[[noreturn]] void ThrowCopy(const KELib::Exception& e) {
  KEString text(e.What());
  throw KELib::Exception(text.Str(), text.Length());
}

void CopyNames(const PropertyList& sections, const std::vector<unsigned int>& from,
               KEVector<KEString>& to) {
  for (unsigned int index : from) to.Add(sections.At(index));
}

std::unique_ptr<WaiterHolder> HolderOf(KELib::KEWaiter* waiter) {
  if (waiter == nullptr) return nullptr;
  auto holder = std::make_unique<WaiterHolder>();
  holder->waiter = waiter;
  return holder;
}

bool Names(KEVector<KEString>& names, KEString& wanted) {
  return names.Index(wanted) < names.Count();
}

bool Holds(const DataSyncInfo& filter, const MethodDataSyncInfo& methods) {
  return std::find(filter.methods.begin(), filter.methods.end(), &methods) != filter.methods.end();
}

}  // namespace

Watches::Watches(KELib::KEMutex& tableMutex, Filters& filterTable, MethodInfos& methodTable,
                 KE::Instance::KETypeCache& typeCache, SyncState& syncState,
                 ServerCalls& serverCalls)
    : mutex(tableMutex),
      filters(filterTable),
      methodInfos(methodTable),
      types(typeCache),
      state(syncState),
      server(serverCalls) {}

// --- both tables ---------------------------------------------------------------------------------

bool Watches::Any() {
  KEMutexGuard guard(&mutex);
  return AnyNoLock();
}

bool Watches::AnyNoLock() {
  return filters.Count() > 0 || methodInfos.Count() > 0;
}

void Watches::Abandon(ManagedObjectReference* filter, ManagedObjectReference* methods,
                      ManagedObjectReference& methodsKey, unsigned long long stopsBefore) noexcept {
  try {
    KEMutexGuard guard(&mutex);
    DataSyncInfo* own = FindOwnFilterNoLock(filter);
    const bool methodsAlone = filter == nullptr && methods != nullptr;
    MethodDataSyncInfo* info = methodsAlone ? FindMethodsNoLock(methodsKey) : nullptr;
    if (info != nullptr && info->reference.get() != methods) info = nullptr;
    // First what the caller may destroy, and what cannot fail.
    if (own != nullptr) ReleaseWaiterNoLock(own->waiter);
    if (info != nullptr) ReleaseWaiterNoLock(info->waiter);
    if (state.Stops() != stopsBefore) return;  // the next watch ends what is left
    if (own != nullptr) DestroyFilter(filter);
    if (info != nullptr) StopMethodsNoLock(methodsKey);
  } catch (...) {
    Log(nullptr, LOG_LEVEL_VERBOSE, "Could not take back a watch that failed to start.");
  }
}

void Watches::ForgetNoLock() {
  ReleaseAllNoLock();
  ++generation;
  filters.Clear();
  methodInfos.Clear();
  roles.Clear();
  stale.Forget();
  fullRequest = FullRequest();
}

bool Watches::IsCacheNamedNoLock(KEString& type) {
  for (auto it = filters.Begin(); !it.End(); ++it) {
    if (Names(it->value->cacheTypes, type)) return true;
  }
  for (auto it = methodInfos.Begin(); !it.End(); ++it) {
    if (Names(it->value->cacheTypes, type)) return true;
  }
  return false;
}

// "TaskInfo" is among them always: a clean-up may have emptied the type cache.
void Watches::CreateCaches(const PropertyList& sections, KEVector<KEString>& cacheTypes) {
  CopyNames(sections, sections.cacheTypes, cacheTypes);
  KEString taskType(KE::Stub::TaskInfoClass);
  types.CreateDataCache(taskType);
  for (unsigned int i = 0; i < cacheTypes.Count(); ++i) types.CreateDataCache(cacheTypes[i]);
}

// --- filters -------------------------------------------------------------------------------------

bool Watches::HasFilters() {
  KEMutexGuard guard(&mutex);
  return HasFiltersNoLock();
}

bool Watches::HasFiltersNoLock() {
  return filters.Count() > 0;
}

ManagedObjectReference* Watches::CreateFilter(ManagedObjectReference* root,
                                              const PropertyList& list, KELib::KEWaiter* waiter) {
  KELib::Xml::KEXmlBuffer body;
  server.WriteCreateFilter(*root, list, body);
  KEMutexGuard guard(&mutex);
  try {
    return RecordFilterNoLock(server.CreateFilter(body), list, waiter);
  } catch (const KELib::Exception& e) {
    Log(nullptr, LOG_LEVEL_VERBOSE, "Exception Creating PropFilter : %s", e.What());
    ThrowCopy(e);
  }
}

ManagedObjectReference* Watches::RecordFilterNoLock(
    std::unique_ptr<ManagedObjectReference> reference, const PropertyList& list,
    KELib::KEWaiter* waiter) {
  auto info = std::make_unique<DataSyncInfo>();
  info->isTask = list.IsTaskWatch();
  info->taskPending = info->isTask;
  info->waiter = HolderOf(waiter);
  CreateCaches(list, info->cacheTypes);
  info->classes = StaleObjects::ClassesOf(list);

  ++generation;
  ManagedObjectReference* key = reference.get();
  DataSyncInfo* older = FindFilterNoLock(*key);
  const StaleObjects::Classes before = older != nullptr ? older->classes : 0;
  if (older != nullptr) {
    // The server handed the same filter out again: a holder of the older reference keeps it
    // valid.
    ReleaseWaiterNoLock(older->waiter);
    info->methods.swap(older->methods);
    reference = std::move(older->reference);
    key = reference.get();
    filters.Remove(key);
  }
  NoteFilterCameNoLock(*info, before);
  info->reference = std::move(reference);
  filters.Insert(key, info.get());
  info.release();
  return key;
}

// `before`: what the filter watched already, when the server has handed it out again.
void Watches::NoteFilterCameNoLock(DataSyncInfo& info, StaleObjects::Classes before) {
  const StaleObjects::Classes others = ClassesNoLock();
  stale.FilterWent(before & ~info.classes, others);
  if (!stale.FilterCame(info.classes & ~before, others, types)) return;
  stale.ExpectEverything();
  fullRequest.AtOnce();
}

StaleObjects::Classes Watches::ClassesNoLock() {
  StaleObjects::Classes classes = 0;
  for (auto it = filters.Begin(); !it.End(); ++it) {
    classes |= it->value->classes;
  }
  return classes;
}

DataSyncInfo* Watches::FindFilterNoLock(ManagedObjectReference& filter) {
  ManagedObjectReference* key = &filter;
  DataSyncInfo** found = filters.Get(key);
  return found != nullptr ? *found : nullptr;
}

// `reference`, which may be freed, is compared only. Another watch may have its address by now, but
// none that this thread made, since this one was set up.
DataSyncInfo* Watches::FindOwnFilterNoLock(const ManagedObjectReference* reference) {
  if (reference == nullptr) return nullptr;
  for (auto it = filters.Begin(); !it.End(); ++it) {
    DataSyncInfo* info = it->value;
    if (info->reference.get() != reference) continue;
    return info->maker == std::this_thread::get_id() ? info : nullptr;
  }
  return nullptr;
}

void Watches::DestroyFilter(ManagedObjectReference* filter) {
  if (filter == nullptr) return;
  KEMutexGuard guard(&mutex);
  server.DestroyFilter(*filter);
  DataSyncInfo* info = FindFilterNoLock(*filter);
  if (info == nullptr) return;
  // The methods go first: what the caches hold is left as last known, as for every filter.
  ReleaseWaiterNoLock(info->waiter);
  LeaveMethodsNoLock(*info);
  RemoveFilterNoLock(*filter);
}

// `filter` usually is the record's own reference, which dies here. Needs no memory.
void Watches::RemoveFilterNoLock(ManagedObjectReference& filter) {
  DataSyncInfo* info = FindFilterNoLock(filter);
  if (info == nullptr) return;
  ReleaseWaiterNoLock(info->waiter);
  // The map's key is the record's own reference, which must outlive the removal.
  const std::unique_ptr<ManagedObjectReference> reference = std::move(info->reference);
  ManagedObjectReference* key = reference.get();
  const StaleObjects::Classes classes = info->classes;
  ++generation;
  filters.Remove(key);
  stale.FilterWent(classes, ClassesNoLock());
}

// --- property methods ----------------------------------------------------------------------------

ManagedObjectReference* Watches::RegisterMethods(ManagedObjectReference* root,
                                                 const PropertyList& sections,
                                                 ManagedObjectReference* filter,
                                                 KELib::KEWaiter* waiter,
                                                 ManagedObjectReference& key) {
  auto info = std::make_unique<MethodDataSyncInfo>();
  info->target.type = root->type;
  info->target.value = root->value;
  key.type = TypePropertyMethod;
  key.value = root->value;
  for (unsigned int index : sections.methods) {
    info->methods.Add(sections.At(index));
    info->outcomes.emplace_back();
    key.value += info->methods.Count() == 1 ? "/" : ",";
    key.value += sections.At(index);
  }
  info->reference.reset(KE::Stub::CreateManagedObjectReference(key.type, key.value));
  std::unique_ptr<WaiterHolder> holder;
  if (waiter != nullptr && filter == nullptr) {
    holder = std::make_unique<WaiterHolder>();
    holder->waiter = waiter;
  }

  KEMutexGuard guard(&mutex);
  DataSyncInfo* owner = FindOwnFilterNoLock(filter);
  if (filter != nullptr && owner == nullptr) return nullptr;
  if (owner != nullptr) owner->methods.reserve(owner->methods.size() + 1);
  CreateCaches(sections, info->cacheTypes);
  MethodDataSyncInfo* record = FindMethodsNoLock(key);
  if (record == nullptr) {
    ManagedObjectReference* ownKey = info->reference.get();
    methodInfos.Insert(ownKey, info.get());
    record = info.release();
  } else {
    for (unsigned int i = 0; i < info->cacheTypes.Count(); ++i) {
      KEString& type = info->cacheTypes[i];
      if (!Names(record->cacheTypes, type)) record->cacheTypes.Add(type);
    }
  }
  if (owner == nullptr) {
    ++record->lists;
  } else if (!Holds(*owner, *record)) {
    owner->methods.push_back(record);
  }
  if (holder != nullptr) {
    ReleaseWaiterNoLock(record->waiter);  // an older one had its data when its own call returned
    record->waiter = std::move(holder);
  }
  return record->reference.get();
}

MethodDataSyncInfo* Watches::FindMethodsNoLock(ManagedObjectReference& ref) {
  ManagedObjectReference* key = &ref;
  MethodDataSyncInfo** found = methodInfos.Get(key);
  return found != nullptr ? *found : nullptr;
}

// Whether the list of a filter names the methods, that of `except` aside.
bool Watches::NamesMethodsNoLock(const MethodDataSyncInfo& methods, const DataSyncInfo* except) {
  for (auto it = filters.Begin(); !it.End(); ++it) {
    if (it->value != except && Holds(*it->value, methods)) return true;
  }
  return false;
}

// For a filter that ends. Without memory nothing is lost: it may be stopped again.
void Watches::LeaveMethodsNoLock(DataSyncInfo& filter) {
  while (!filter.methods.empty()) {
    MethodDataSyncInfo* info = filter.methods.back();
    if (info->lists == 0 && !NamesMethodsNoLock(*info, &filter)) {
      DestroyMethods(info->reference.get());  // takes it out of `filter.methods`, too
    } else {
      filter.methods.pop_back();
    }
  }
}

void Watches::StopMethodsNoLock(ManagedObjectReference& ref) {
  MethodDataSyncInfo* info = FindMethodsNoLock(ref);
  if (info == nullptr || info->lists == 0) return;
  ReleaseWaiterNoLock(info->waiter);
  if (info->lists > 1 || NamesMethodsNoLock(*info, nullptr)) {
    --info->lists;
  } else {
    DestroyMethods(info->reference.get());
  }
}

void Watches::DestroyMethods(ManagedObjectReference* ref) {
  if (ref == nullptr) return;
  KEMutexGuard guard(&mutex);
  MethodDataSyncInfo* info = FindMethodsNoLock(*ref);
  if (info == nullptr) return;
  ReleaseWaiterNoLock(info->waiter);
  // Everything that needs memory comes before the first change.
  KEVector<KEString> cacheTypes;
  for (unsigned int i = 0; i < info->cacheTypes.Count(); ++i) cacheTypes.Add(info->cacheTypes[i]);
  KE::Instance::KECacheGuard caches(&types);
  caches.LockAll();  // deleting a stub writes into its partners, whichever caches they live in
  for (auto it = filters.Begin(); !it.End(); ++it) {
    auto& held = it->value->methods;
    held.erase(std::remove(held.begin(), held.end(), info), held.end());
  }
  // The map's key is the record's own reference, which must outlive the removal.
  const std::unique_ptr<ManagedObjectReference> reference = std::move(info->reference);
  ManagedObjectReference* key = reference.get();
  methodInfos.Remove(key);
  DropUnnamedStubsNoLock(cacheTypes);
}

void Watches::DropUnnamedStubsNoLock(KEVector<KEString>& cacheTypes) {
  for (unsigned int i = 0; i < cacheTypes.Count(); ++i) {
    if (IsCacheNamedNoLock(cacheTypes[i])) continue;
    KE::Instance::KEDataCache* cache = types.GetDataCache(cacheTypes[i]);
    if (cache != nullptr) cache->ClearNoLock();
  }
}

// --- waiters -------------------------------------------------------------------------------------

void Watches::ReleaseWaiterNoLock(std::unique_ptr<WaiterHolder>& waiter) {
  if (waiter == nullptr) return;
  waiter->Release(state);
  waiter.reset();
}

void Watches::ReleaseFilledNoLock(DataSyncInfo& info) {
  if (info.waiter == nullptr || info.taskPending) return;
  info.held = stale.IsOpen(info.classes);
  if (!info.held) ReleaseWaiterNoLock(info.waiter);
}

void Watches::ReleaseNoLock(KELib::KEWaiter* waiter) {
  for (auto it = filters.Begin(); !it.End(); ++it) {
    DataSyncInfo* info = it->value;
    if (info->waiter == nullptr) continue;
    if (info->waiter->waiter == waiter) ReleaseWaiterNoLock(info->waiter);
  }
}

void Watches::ReleaseAllNoLock() {
  for (auto it = filters.Begin(); !it.End(); ++it) {
    ReleaseWaiterNoLock(it->value->waiter);
  }
  for (auto it = methodInfos.Begin(); !it.End(); ++it) {
    ReleaseWaiterNoLock(it->value->waiter);
  }
}

// A watch whose set was cut short hears everything again, of its task too. Its waiter is released
// now, since this server may never send a whole set; one that waits until the cache is true is not.
void Watches::ReleaseAfterSet(bool cutShort) {
  if (WaiterHolder::Count() == 0) return;
  KEMutexGuard guard(&mutex);
  for (auto it = filters.Begin(); !it.End(); ++it) {
    DataSyncInfo* info = it->value;
    if (cutShort || !info->received) ReleaseFilledNoLock(*info);
    info->received = false;
  }
}

void Watches::ReleaseAfterFailures() {
  KEMutexGuard guard(&mutex);
  for (auto it = filters.Begin(); !it.End(); ++it) {
    DataSyncInfo* info = it->value;
    if (info->taskPending || stale.IsOpen(info->classes)) ReleaseWaiterNoLock(info->waiter);
  }
}

void Watches::HoldForReportsNoLock() {
  for (auto it = filters.Begin(); !it.End(); ++it) {
    it->value->held = stale.IsOpen(it->value->classes);
  }
}

void Watches::ReleaseHeld() {
  if (WaiterHolder::Count() == 0) return;
  KEMutexGuard guard(&mutex);
  for (auto it = filters.Begin(); !it.End(); ++it) {
    if (it->value->held) ReleaseFilledNoLock(*it->value);
  }
}

void Watches::ReleaseAnsweredMethods() {
  const auto isGood = [](const MethodOutcome& outcome) {
    return outcome.last == MethodOutcome::Last::answered;
  };
  KEMutexGuard guard(&mutex);
  for (auto it = methodInfos.Begin(); !it.End(); ++it) {
    MethodDataSyncInfo* info = it->value;
    if (info->waiter == nullptr) continue;
    if (std::all_of(info->outcomes.begin(), info->outcomes.end(), isGood)) {
      ReleaseWaiterNoLock(info->waiter);
    }
  }
}

}  // namespace KE::Service
