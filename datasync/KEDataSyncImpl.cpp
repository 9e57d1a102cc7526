// SPDX-License-Identifier: MIT
#include "datasync/KEDataSyncImpl.h"

#include <chrono>

#include "datasync/DataSyncConstants.h"
#include "datasync/FilterSpec.h"
#include "datasync/FullRequest.h"
#include "datasync/PropertyList.h"
#include "datasync/RoleMemory.h"
#include "datasync/ServerCalls.h"
#include "datasync/StaleObjects.h"
#include "datasync/SyncState.h"
#include "datasync/WaiterHolder.h"
#include "datasync/WalkRoom.h"
#include "foundation/KEConstants.h"
#include "foundation/KEException.h"
#include "foundation/KEMutexGuard.h"
#include "foundation/Logger.h"
#include "instance/KECacheGuard.h"
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

// How long a stopped loop is given before its wait is cancelled again.
constexpr int kStopStepMs = 100;

[[noreturn]] void LogAndThrow(const char* text) {
  Log(nullptr, LOG_LEVEL_VERBOSE, "%s", text);
  throw KELib::SystemException(text);
}

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

}  // namespace

KEDataSync::~KEDataSync() = default;

KEDataSync* CreateDataSync(KEMethod* method, ManagedObjectReference* propertyCollector) {
  auto dataSync = std::make_unique<KEDataSyncImpl>();
  dataSync->Init(method, propertyCollector);
  return dataSync.release();
}

KEDataSyncImpl::KEDataSyncImpl()
    : mutex(std::make_unique<KELib::KEMutex>()),
      state(std::make_unique<SyncState>()),
      methodRun(std::make_unique<KELib::KEMutex>()),
      roles(std::make_unique<RoleMemory>()),
      stale(std::make_unique<StaleObjects>()),
      fullRequest(std::make_unique<FullRequest>()) {}

KEDataSyncImpl::~KEDataSyncImpl() {
  while (!End()) {
    // A thread is still inside: it would use what is destroyed here.
  }
  if (methodInfos != nullptr) ForgetWatchesNoLock();
}

void KEDataSyncImpl::Init(KEMethod* invoker, ManagedObjectReference* collector) {
  auto newCache = std::make_unique<KE::Instance::KETypeCache>();
  KEString taskType(KE::Stub::TaskInfoClass);
  newCache->CreateDataCache(taskType);
  auto newRoom = std::make_unique<WalkRoom>(*newCache);
  auto newFilters = std::make_unique<Filters>(KELib::HASH_CAP, KELib::HASH_FILLRATIO);
  auto newMethods = std::make_unique<MethodInfos>(KELib::HASH_CAP, KELib::HASH_FILLRATIO);
  auto newServer = std::make_unique<ServerCalls>(invoker, collector, *state, stopRequested);
  // The first iterator makes a table's room for iterators: the end must not need memory.
  newFilters->Begin();
  newMethods->Begin();
  KEMutexGuard guard(mutex.get());
  walkRoom = std::move(newRoom);
  typeCache = std::move(newCache);
  filters = std::move(newFilters);
  methodInfos = std::move(newMethods);
  server = std::move(newServer);
  method = invoker;
  propertyCollector = collector;
}

KE::Instance::KETypeCache* KEDataSyncImpl::GetCache() {
  return typeCache.get();
}

void KEDataSyncImpl::GetStatus(KESyncStatus& status) {
  state->GetStatus(status);
}

bool KEDataSyncImpl::WaitForChange(unsigned long long& seen, int milliseconds) {
  SyncState::CallScope scope(*state);
  return state->WaitForChange(seen, milliseconds, stopRequested);
}

// --- stopping ------------------------------------------------------------------------------------

void KEDataSyncImpl::RequestStop() {
  state->AnnounceStop(stopRequested);
  if (state->waitOut) server->CancelWaitToStop();
}

bool KEDataSyncImpl::End() {
  using Clock = std::chrono::steady_clock;
  const auto begin = Clock::now();
  const auto interruptAt = begin + std::chrono::seconds(1);
  const auto giveUpAt = begin + std::chrono::seconds(75);
  state->RefuseEntries();
  RequestStop();
  bool interrupted = false;
  bool left = state->WaitUntilLeft(kStopStepMs);
  while (!left && Clock::now() < giveUpAt) {
    if (Clock::now() >= interruptAt) {
      // The cancel did not help, or could not be sent: the peer does not answer.
      if (server != nullptr) server->InterruptTransfers(true);
      interrupted = true;
    } else if (state->waitOut) {
      server->CancelWaitToStop();  // an earlier one may have overtaken the wait that it was for
    }
    left = state->WaitUntilLeft(kStopStepMs);
  }
  if (interrupted && server != nullptr) server->InterruptTransfers(false);
  if (!left) {
    Log(nullptr, KELib::Logging::LOG_LEVEL_ERROR,
        "Data sync could not be stopped: a thread is still inside.");
  }
  return left;
}

void KEDataSyncImpl::Cleanup() {
  if (!End()) return;  // said in the log; clearing would pull the tables from under the thread
  {
    KEMutexGuard guard(mutex.get());
    ForgetEverythingNoLock();
  }
  state->AcceptEntries();
}

void KEDataSyncImpl::ForgetEverythingNoLock() {
  ForgetWatchesNoLock();
  typeCache->Clear();
}

// Needs no memory.
void KEDataSyncImpl::ForgetWatchesNoLock() {
  for (auto it = filters->Begin(); !it.End(); ++it) {
    if (it->value != nullptr) ReleaseWaiterNoLock(it->value->waiter);
  }
  for (auto it = methodInfos->Begin(); !it.End(); ++it) {
    if (it->value != nullptr) ReleaseWaiterNoLock(it->value->waiter);
  }
  filters->Clear();
  methodInfos->Clear();
  roles->Clear();
  version.Clear();
  stale->Forget();
  *fullRequest = FullRequest();
  state->NoteStopped();
}

// Who asked for the stop has cancelled the wait once, maybe before it was sent. Another thread may
// revive the data sync first: its loop is not waited for.
void KEDataSyncImpl::AwaitStoppedLoop() {
  while (stopRequested && !state->WaitUntilIdle(kStopStepMs)) {
    if (state->waitOut) server->CancelWaitToStop();
  }
}

void KEDataSyncImpl::RenewStop() {
  if (!stopRequested) RequestStop();
}

// After a stop the server has forgotten the filters, and what the caches hold is of an older login.
void KEDataSyncImpl::ReviveAfterStop() {
  while (stopRequested) {
    AwaitStoppedLoop();
    KEMutexGuard guard(mutex.get());
    if (!stopRequested || state->GetPhase() != SyncState::Phase::idle) continue;
    ForgetEverythingNoLock();
    started = false;
    initialCycleDone = false;
    failuresInARow = cancelsInARow = 0;
    server->ForgetStop();
    stopRequested = false;
  }
}

// --- the filter's request ------------------------------------------------------------------------

void KEDataSyncImpl::CreatePropertySet(KEVector<KEString>& list, KELib::Xml::KEXmlBuffer& xml) {
  KE::Service::CreatePropertySet(list, xml);
}

void KEDataSyncImpl::CreateSelectSet(KEVector<KEString>& list, KELib::Xml::KEXmlBuffer& xml) {
  KE::Service::CreateSelectSet(list, xml);
}

void KEDataSyncImpl::CreateObjectSet(ManagedObjectReference* root, KEVector<KEString>& list,
                                     KELib::Xml::KEXmlBuffer& xml) {
  KE::Service::CreateObjectSet(root, list, xml);
}

void KEDataSyncImpl::CreateFilterSpec(ManagedObjectReference* root, KEVector<KEString>& list,
                                      KELib::Xml::KEXmlBuffer& xml) {
  KE::Service::CreateFilterSpec(root, list, xml);
}

// --- watches -------------------------------------------------------------------------------------

ManagedObjectReference* KEDataSyncImpl::SetupDataSync(ManagedObjectReference* root,
                                                      KEVector<KEString>& list,
                                                      KELib::KEWaiter* waiter) {
  SyncState::CallScope scope(*state);
  if (root == nullptr) {
    LogAndThrow("Unable to get data - root object or type name not provided.");
  }
  const PropertyList sections(list);
  if (!sections.hasPropertySet && sections.methods.empty()) {
    LogAndThrow("Unable to get data - no properties or property methods defined.");
  }
  const unsigned long long stopsBefore = state->Stops();
  ReviveAfterStop();

  ManagedObjectReference* filter = nullptr;
  ManagedObjectReference* methods = nullptr;
  ManagedObjectReference methodsKey;  // as `methods` is, which another thread may free
  std::shared_ptr<TaskWait> blocked;
  try {
    if (sections.hasPropertySet) filter = CreatePropFilter(root, list, waiter);
    if (!sections.methods.empty()) {
      methods = RegisterMethods(root, sections, filter, waiter, methodsKey);
      if (methods != nullptr) RunMethodsAtSetup(methodsKey.value);
    }
    if (filter != nullptr && waiter != nullptr && sections.IsTaskWatch()) {
      blocked = BlockOnTask(filter, stopsBefore);
    }
    StartSyncData();
  } catch (...) {
    AbandonSetup(filter, methods, methodsKey, stopsBefore);
    throw;
  }
  if (blocked != nullptr) state->WaitForRelease(*blocked, stopRequested);
  return filter != nullptr ? filter : methods;
}

// Leaves no record, reference or waiter of a setup that failed behind.
// Another thread may have stopped the watch while the call went on: then `filter` or `methods` is
// freed.
void KEDataSyncImpl::AbandonSetup(ManagedObjectReference* filter, ManagedObjectReference* methods,
                                  ManagedObjectReference& methodsKey,
                                  unsigned long long stopsBefore) noexcept {
  try {
    KEMutexGuard guard(mutex.get());
    DataSyncInfo* own = FindOwnFilterNoLock(filter);
    const bool methodsAlone = filter == nullptr && methods != nullptr;
    MethodDataSyncInfo* info = methodsAlone ? FindMethodsNoLock(methodsKey) : nullptr;
    if (info != nullptr && info->reference.get() != methods) info = nullptr;
    // First what the caller may destroy, and what cannot fail.
    if (own != nullptr) ReleaseWaiterNoLock(own->waiter);
    if (info != nullptr) ReleaseWaiterNoLock(info->waiter);
    if (state->Stops() != stopsBefore) return;  // the next watch ends what is left
    if (own != nullptr) DestroyPropFilter(filter);
    if (info != nullptr) StopMethodsNoLock(methodsKey);
  } catch (...) {
    Log(nullptr, LOG_LEVEL_VERBOSE, "Could not take back a watch that failed to start.");
  }
}

ManagedObjectReference* KEDataSyncImpl::CreatePropFilter(ManagedObjectReference* root,
                                                         KEVector<KEString>& list,
                                                         KELib::KEWaiter* waiter) {
  KELib::Xml::KEXmlBuffer body;
  server->WriteCreateFilter(root, list, body);
  KEMutexGuard guard(mutex.get());
  try {
    return RecordFilterNoLock(server->CreateFilter(body), list, waiter);
  } catch (const KELib::Exception& e) {
    Log(nullptr, LOG_LEVEL_VERBOSE, "Exception Creating PropFilter : %s", e.What());
    ThrowCopy(e);
  }
}

ManagedObjectReference* KEDataSyncImpl::RecordFilterNoLock(
    std::unique_ptr<ManagedObjectReference> reference, KEVector<KEString>& list,
    KELib::KEWaiter* waiter) {
  const PropertyList sections(list);
  auto info = std::make_unique<DataSyncInfo>();
  info->isTask = sections.IsTaskWatch();
  info->taskPending = info->isTask;
  info->waiter = HolderOf(waiter);
  CreateCaches(sections, info->cacheTypes);
  info->classes = StaleObjects::ClassesOf(sections);

  ManagedObjectReference* key = reference.get();
  DataSyncInfo* older = FindFilterNoLock(*key);
  const unsigned int before = older != nullptr ? older->classes : 0;
  if (older != nullptr) {
    // The server handed the same filter out again: whoever holds the older reference keeps it
    // valid.
    ReleaseWaiterNoLock(older->waiter);
    info->methods.swap(older->methods);
    reference = std::move(older->reference);
    key = reference.get();
    filters->Remove(key);
  }
  NoteFilterCameNoLock(*info, before);
  info->reference = std::move(reference);
  filters->Insert(key, info.get());
  info.release();
  return key;
}

// `before`: what the filter watched already, when the server has handed it out again.
void KEDataSyncImpl::NoteFilterCameNoLock(DataSyncInfo& info, unsigned int before) {
  const unsigned int others = WatchedClassesNoLock();
  stale->FilterWent(before & ~info.classes, others);
  if (!stale->FilterCame(info.classes & ~before, others, *typeCache)) return;
  stale->ExpectEverything();
  fullRequest->AtOnce();
}

unsigned int KEDataSyncImpl::WatchedClassesNoLock() {
  unsigned int classes = 0;
  for (auto it = filters->Begin(); !it.End(); ++it) {
    if (it->value != nullptr) classes |= it->value->classes;
  }
  return classes;
}

// "TaskInfo" is among them always: a clean-up may have emptied the type cache.
void KEDataSyncImpl::CreateCaches(const PropertyList& sections, KEVector<KEString>& cacheTypes) {
  CopyNames(sections, sections.cacheTypes, cacheTypes);
  KEString taskType(KE::Stub::TaskInfoClass);
  typeCache->CreateDataCache(taskType);
  for (unsigned int i = 0; i < cacheTypes.Count(); ++i) typeCache->CreateDataCache(cacheTypes[i]);
}

DataSyncInfo* KEDataSyncImpl::FindFilterNoLock(ManagedObjectReference& filter) {
  ManagedObjectReference* key = &filter;
  DataSyncInfo** found = filters->Get(key);
  return found != nullptr ? *found : nullptr;
}

// The record that the calling thread made and to which `reference` belongs; null when it has gone.
// `reference`, which may be freed, is compared only. Another watch may have its address by now, but
// none that this thread made, since this one was set up.
DataSyncInfo* KEDataSyncImpl::FindOwnFilterNoLock(const ManagedObjectReference* reference) {
  if (reference == nullptr) return nullptr;
  for (auto it = filters->Begin(); !it.End(); ++it) {
    DataSyncInfo* info = it->value;
    if (info == nullptr || info->reference.get() != reference) continue;
    return info->maker == std::this_thread::get_id() ? info : nullptr;
  }
  return nullptr;
}

void KEDataSyncImpl::ReleaseWaiterNoLock(std::unique_ptr<WaiterHolder>& waiter) {
  if (waiter == nullptr) return;
  waiter->Release(*state);
  waiter.reset();
}

void KEDataSyncImpl::ReleaseFilledNoLock(DataSyncInfo& info) {
  if (info.waiter == nullptr || info.taskPending) return;
  info.held = stale->IsOpen(info.classes);
  if (!info.held) ReleaseWaiterNoLock(info.waiter);
}

void KEDataSyncImpl::StopDataSync(ManagedObjectReference* ref) {
  SyncState::CallScope scope(*state);
  if (ref == nullptr) return;
  KEMutexGuard guard(mutex.get());
  if (ref->type.Equals(TypePropertyFilter)) {
    DestroyPropFilter(ref);
  } else {
    StopMethodsNoLock(*ref);
  }
}

void KEDataSyncImpl::DestroyPropFilter(ManagedObjectReference* filter) {
  if (filter == nullptr) return;
  KEMutexGuard guard(mutex.get());
  server->DestroyFilter(*filter);
  DataSyncInfo* info = FindFilterNoLock(*filter);
  if (info == nullptr) return;
  // The methods go first: what the caches hold is left as last known, as for every filter.
  ReleaseWaiterNoLock(info->waiter);
  LeaveMethodsNoLock(*info);
  RemoveFilterNoLock(*filter);
}

// `filter` usually is the record's own reference, which dies here. Needs no memory.
void KEDataSyncImpl::RemoveFilterNoLock(ManagedObjectReference& filter) {
  DataSyncInfo* info = FindFilterNoLock(filter);
  if (info == nullptr) return;
  ReleaseWaiterNoLock(info->waiter);
  // The map's key is the record's own reference, which must outlive the removal.
  const std::unique_ptr<ManagedObjectReference> reference = std::move(info->reference);
  ManagedObjectReference* key = reference.get();
  const unsigned int classes = info->classes;
  filters->Remove(key);
  stale->FilterWent(classes, WatchedClassesNoLock());
}

void KEDataSyncImpl::NoteUnknownFilter(ManagedObjectReference& filter) {
  unknownFilter.type = filter.type;
  unknownFilter.value = filter.value;
}

}  // namespace KE::Service
