// SPDX-License-Identifier: MIT
#include "datasync/KEDataSyncImpl.h"

#include "datasync/DataSyncConstants.h"
#include "datasync/FilterSpec.h"
#include "datasync/PromisedSteps.h"
#include "datasync/PropertyList.h"
#include "datasync/PropertyMethods.h"
#include "datasync/ServerCalls.h"
#include "datasync/SyncLoop.h"
#include "datasync/SyncState.h"
#include "datasync/SyncStopper.h"
#include "datasync/TaskWaiting.h"
#include "datasync/UpdateSets.h"
#include "datasync/Watches.h"
#include "foundation/KEConstants.h"
#include "foundation/KEException.h"
#include "foundation/KEMutexGuard.h"
#include "foundation/Logger.h"
#include "instance/ChangeFeed.h"
#include "instance/ChangeHub.h"
#include "stub/classes/ClassNames.h"

namespace KE::Service {

namespace {

using KE::Stub::ManagedObjectReference;
using KELib::KEMutexGuard;
using KELib::KEString;
using KELib::KEVector;
using KELib::Logging::Log;
using KELib::Logging::LOG_LEVEL_VERBOSE;

[[noreturn]] void LogAndThrow(const char* text) {
  Log(nullptr, LOG_LEVEL_VERBOSE, "%s", text);
  throw KELib::SystemException(text);
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
      changes(std::make_shared<KE::Instance::ChangeHub>()),
      stopper(std::make_unique<SyncStopper>(*state, *changes, stopRequested)) {}

KEDataSyncImpl::~KEDataSyncImpl() {
  while (!End()) {
    // A thread is still inside: it would use what is destroyed here.
  }
  if (watches != nullptr) ForgetWatches();
}

void KEDataSyncImpl::Init(KEMethod* invoker, ManagedObjectReference* collector) {
  auto newCache = std::make_unique<KE::Instance::KETypeCache>(changes);
  KEString taskType(KE::Stub::TaskInfoClass);
  newCache->CreateDataCache(taskType);
  auto newFilters = std::make_unique<Filters>(KELib::HASH_CAP, KELib::HASH_FILLRATIO);
  auto newMethods = std::make_unique<MethodInfos>(KELib::HASH_CAP, KELib::HASH_FILLRATIO);
  auto newServer = std::make_unique<ServerCalls>(invoker, collector, *state, stopRequested);
  auto newWatches =
      std::make_unique<Watches>(*mutex, *newFilters, *newMethods, *newCache, *state, *newServer);
  auto newSets = std::make_unique<UpdateSets>(*newWatches, *newCache);
  auto newPropertyMethods =
      std::make_unique<PropertyMethods>(*newWatches, *newServer, *state, *newCache, stopRequested);
  auto newLoop = std::make_unique<SyncLoop>(
      *this, SyncLoop::Fields{version, initialCycleDone, started, stopRequested, *newCache},
      SyncLoop::Helpers{*newWatches, *newSets, *newPropertyMethods, *newServer, *state});
  // The first iterator makes a table's room for iterators: the end must not need memory.
  newFilters->Begin();
  newMethods->Begin();
  KEMutexGuard guard(mutex.get());
  typeCache = std::move(newCache);
  filters = std::move(newFilters);
  methodInfos = std::move(newMethods);
  server = std::move(newServer);
  stopper->SetServer(*server);
  watches = std::move(newWatches);
  updateSets = std::move(newSets);
  propertyMethods = std::move(newPropertyMethods);
  loop = std::move(newLoop);
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

KE::Instance::KEChangeFeed* KEDataSyncImpl::OpenChangeFeed() {
  SyncState::CallScope scope(*state);
  return std::make_unique<KE::Instance::ChangeFeed>(changes, *typeCache).release();
}

// What a watch after a stop finds cached goes, and mostly comes back before the watch is set up.
// From the one to the other the feeds give nothing.
class KEDataSyncImpl::FeedHold {
 public:
  explicit FeedHold(KE::Instance::ChangeHub& whose) : feeds(whose) {}
  ~FeedHold() {
    if (holds) feeds.Release();
  }
  FeedHold(const FeedHold&) = delete;
  FeedHold& operator=(const FeedHold&) = delete;

  void Begin() {
    if (!holds) feeds.Hold();
    holds = true;
  }

 private:
  KE::Instance::ChangeHub& feeds;
  bool holds = false;
};

// --- stopping ------------------------------------------------------------------------------------

void KEDataSyncImpl::RequestStop() {
  stopper->Request();
}

void KEDataSyncImpl::StopAtOnce() {
  stopper->RequestAtOnce();
}

void KEDataSyncImpl::RenewStop() {
  stopper->Renew();
}

bool KEDataSyncImpl::End() {
  return stopper->End();
}

void KEDataSyncImpl::Cleanup() {
  if (!End()) return;  // said in the log; clearing would pull the tables from under the thread
  ForgetEverything();
  state->AcceptEntries();
}

void KEDataSyncImpl::ForgetEverything() {
  KEMutexGuard guard(watches->GetMutex());
  ForgetWatches();
  typeCache->Clear();
}

// Needs no memory.
void KEDataSyncImpl::ForgetWatches() {
  KEMutexGuard guard(watches->GetMutex());
  watches->ForgetNoLock();
  version.Clear();
  state->NoteStopped();
}

// After a stop the server has forgotten the filters, and what the caches hold is of an older login.
void KEDataSyncImpl::ReviveAfterStop(FeedHold& feeds) {
  while (stopRequested) {
    stopper->AwaitLoop();
    KEMutexGuard guard(watches->GetMutex());
    if (!stopRequested || state->GetPhase() != SyncState::Phase::idle) continue;
    feeds.Begin();
    ForgetEverything();
    loop->Revive();
    server->ForgetStop();
    stopRequested = false;
    changes->NoteStop(stopRequested);
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
  FeedHold feeds(*changes);
  ReviveAfterStop(feeds);

  ManagedObjectReference* filter = nullptr;
  ManagedObjectReference* methods = nullptr;
  ManagedObjectReference methodsKey;  // as `methods` is, which another thread may free
  std::shared_ptr<TaskWait> blocked;
  try {
    if (sections.hasPropertySet) filter = watches->CreateFilter(root, sections, waiter);
    if (!sections.methods.empty()) {
      methods = watches->RegisterMethods(root, sections, filter, waiter, methodsKey);
      if (methods != nullptr) propertyMethods->RunAtSetup(methodsKey.value);
    }
    if (sections.IsTaskWatch()) {
      blocked = TaskWaiting(*watches, *state, *typeCache).BlockOnTask(filter, stopsBefore);
    }
    loop->Start();
  } catch (...) {
    watches->Abandon(filter, methods, methodsKey, stopsBefore);
    throw;
  }
  if (blocked != nullptr) state->WaitForRelease(*blocked, stopRequested);
  return filter != nullptr ? filter : methods;
}

void KEDataSyncImpl::StopDataSync(ManagedObjectReference* ref) {
  SyncState::CallScope scope(*state);
  if (ref == nullptr) return;
  KEMutexGuard guard(watches->GetMutex());
  if (ref->type.Equals(TypePropertyFilter)) {
    watches->DestroyFilter(ref);
  } else {
    watches->StopMethodsNoLock(*ref);
  }
}

ManagedObjectReference* KEDataSyncImpl::CreatePropFilter(ManagedObjectReference* root,
                                                         KEVector<KEString>& list,
                                                         KELib::KEWaiter* waiter) {
  return watches->CreateFilter(root, PropertyList(list), waiter);
}

void KEDataSyncImpl::DestroyPropFilter(ManagedObjectReference* filter) {
  watches->DestroyFilter(filter);
}

void KEDataSyncImpl::DestroyPropMethod(ManagedObjectReference* ref) {
  watches->DestroyMethods(ref);
}

DataSyncInfo* KEDataSyncImpl::FindFilter(ManagedObjectReference& filter) {
  KEMutexGuard guard(watches->GetMutex());
  return watches->FindFilterNoLock(filter);
}

bool KEDataSyncImpl::WaitForTask(KEString& response, KELib::KEWaiter* waiter) {
  return TaskWaiting(*watches, *state, *typeCache).WaitForTask(*this, response, waiter);
}

void KEDataSyncImpl::PropMethodToCache() {
  propertyMethods->Run();
}

void KEDataSyncImpl::CleanupSessionUserPermissions() {
  propertyMethods->ForgetPermissions();
}

// --- the loop ------------------------------------------------------------------------------------

void KEDataSyncImpl::RestartDataSync() {
  server->CancelWait();
}

void KEDataSyncImpl::StartSyncData() {
  loop->Start();
}

void KEDataSyncImpl::SyncData() {
  loop->Run();
}

bool KEDataSyncImpl::RunThread() noexcept {
  return loop->RunThread();
}

// --- applying update sets ------------------------------------------------------------------------

void KEDataSyncImpl::UpdateSetToCache(UpdateInfo& ui, KELib::Xml::KEXmlReader& r) {
  ui.syncInfo = nullptr;
  updateSets->Apply(r);
}

void KEDataSyncImpl::LockCaches(KE::Instance::KEMultiCacheLock& lock, UpdateInfo& ui) {
  PromisedSteps(*watches, *typeCache).LockCaches(lock, ui);
}

void KEDataSyncImpl::UpdateSimpleType(UpdateInfo& ui, KELib::Xml::KEXmlReader& r) {
  PromisedSteps(*watches, *typeCache).UpdateSimpleType(ui, r);
}

void KEDataSyncImpl::UpdateComplexType(UpdateInfo& ui, KELib::Xml::KEXmlReader& r) {
  PromisedSteps(*watches, *typeCache).UpdateComplexType(ui, r);
}

void KEDataSyncImpl::UpdateArrayOfComplexType(UpdateInfo& ui, KELib::Xml::KEXmlReader& r,
                                              KE::Instance::KEDataCache* primary,
                                              KE::Instance::KEDataCache* secondary) {
  PromisedSteps(*watches, *typeCache).UpdateArrayOfComplexType(ui, r, primary, secondary);
}

void KEDataSyncImpl::UpdateSingleComplexType(UpdateInfo& ui, KELib::Xml::KEXmlReader& r,
                                             KE::Instance::KEDataCache* primary,
                                             KE::Instance::KEDataCache* secondary,
                                             KELib::KEHashmap<KEString, bool>* seen) {
  PromisedSteps(*watches, *typeCache).UpdateSingleComplexType(ui, r, primary, secondary, seen);
}

void KEDataSyncImpl::ProcessArrayDeletes(KE::Instance::KEDataCache* cache,
                                         KELib::KEHashmap<KEString, bool>& seen) {
  PromisedSteps(*watches, *typeCache).ProcessArrayDeletes(cache, seen);
}

void KEDataSyncImpl::GetAssociatedType(const char* tag, KE::Instance::KEDataCache*,
                                       KELib::Xml::KEXmlReader& r, KEString& out) {
  PromisedSteps::GetAssociatedType(tag, r, out);
}

void KEDataSyncImpl::UpdateMissingType(UpdateInfo& ui, KELib::Xml::KEXmlReader&) {
  PromisedSteps(*watches, *typeCache).UpdateMissingType(ui);
}

void KEDataSyncImpl::UpdateObjectLeave(UpdateInfo& ui, KELib::Xml::KEXmlReader& r) {
  UpdateMissingType(ui, r);
}

}  // namespace KE::Service
