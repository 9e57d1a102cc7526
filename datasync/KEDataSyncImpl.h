// SPDX-License-Identifier: MIT
//
// The data sync as agents know it: its life, and what sets a watch up. All else it hands on.
//
//   Watches          the tables of watches, their mutex and their waiters
//   SyncLoop         the cycles of the loop, its thread, what happens when something goes wrong
//   UpdateSets       applies what a cycle brings
//   PropertyMethods  server methods that are invoked after every cycle
//   TaskWaiting      waiting for a server task
//   ServerCalls      the calls to the server
//   SyncState        who is inside, and how everybody is woken
//   SyncStopper      ends the loop and waits until everybody has left
//   PromisedSteps    what only agents call that were built against it
//
// Locks, outermost first: that of the property methods, `mutex` (the filter-table mutex), the type
//   cache's, the data caches', then the leaf inside `state`. "CreateFilter" and
//   "DestroyPropertyFilter" are sent while `mutex` is held, so that no update set of a filter can
//   be looked at before the filter is recorded. No other call is: waiting for updates and
//   cancelling the wait hold no lock, a property method only that of the property methods.
#ifndef KECPP_DATASYNC_KEDATASYNCIMPL_H
#define KECPP_DATASYNC_KEDATASYNCIMPL_H

#include <atomic>
#include <memory>

#include "datasync/DataSyncInfo.h"
#include "datasync/KEDataSync.h"
#include "datasync/MethodDataSyncInfo.h"
#include "datasync/UpdateInfo.h"
#include "foundation/KEHashmap.h"
#include "foundation/KEMutex.h"
#include "foundation/KEThreadAnnotations.h"
#include "instance/KEMultiCacheLock.h"
#include "instance/KETypeCache.h"
#include "stub/classes/ManagedObjectReference.h"

namespace KELib::Xml {
class KEXmlBuffer;
class KEXmlReader;
}  // namespace KELib::Xml

namespace KE::Instance {
class ChangeHub;
}

namespace KE::Service {

class PropertyMethods;
class ServerCalls;
class SyncLoop;
class SyncState;
class SyncStopper;
class UpdateSets;
class Watches;

class KECPP_API KEDataSyncImpl : public KEDataSync {
 public:
  using Filters = KELib::KEHashmap<KE::Stub::ManagedObjectReference*, DataSyncInfo*>;
  using MethodInfos = KELib::KEHashmap<KE::Stub::ManagedObjectReference*, MethodDataSyncInfo*>;

  KEDataSyncImpl();
  ~KEDataSyncImpl() override;  // ends the sync thread first; see End
  KEDataSyncImpl(const KEDataSyncImpl&) = delete;
  KEDataSyncImpl& operator=(const KEDataSyncImpl&) = delete;

  void Init(KEMethod* method, KE::Stub::ManagedObjectReference* propertyCollector) override;
  void Cleanup() override;
  KE::Instance::KETypeCache* GetCache() override;
  KE::Stub::ManagedObjectReference* SetupDataSync(KE::Stub::ManagedObjectReference* root,
                                                  KELib::KEVector<KELib::KEString>& list,
                                                  KELib::KEWaiter* waiter) override;
  void StopDataSync(KE::Stub::ManagedObjectReference* ref) override;
  bool WaitForTask(KELib::KEString& response, KELib::KEWaiter* waiter) override;
  void RequestStop() override;
  void GetStatus(KESyncStatus& status) override;
  bool WaitForChange(unsigned long long& seen, int milliseconds) override;
  KE::Instance::KEChangeFeed* OpenChangeFeed() override;

  // --- for the session and the thread ------------------------------------------------------------

  // As RequestStop, and ends the calls that are under way, one that SetupDataSync waits for among
  // them: for a server that may not answer. A thread that begins a call of the data sync before it
  // sees the stop is ended as well. The first watch afterwards lets calls pass again. Any thread.
  void StopAtOnce();

  // RequestStop, unless one is in force: a watch that was set up since the last one has ended it.
  void RenewStop();

  // Stops the loop, lets every blocked caller go and waits until all have left. False when some
  // thread is still inside after 75 seconds: then nothing of the object may be destroyed. Until
  // Cleanup ends, new entries are refused.
  bool End();

  // What the sync thread runs: SyncData, then its last word. Never throws.
  bool RunThread() noexcept;

  // --- promised: for agents that were built against them -----------------------------------------
  //
  // The library calls none of these. Each takes the locks that it needs unless the calling thread
  // holds them.

  // The functions of these names in datasync/FilterSpec.h; see there.
  static void CreatePropertySet(KELib::KEVector<KELib::KEString>& list,
                                KELib::Xml::KEXmlBuffer& xml);
  static void CreateSelectSet(KELib::KEVector<KELib::KEString>& list, KELib::Xml::KEXmlBuffer& xml);
  static void CreateObjectSet(KE::Stub::ManagedObjectReference* root,
                              KELib::KEVector<KELib::KEString>& list, KELib::Xml::KEXmlBuffer& xml);
  static void CreateFilterSpec(KE::Stub::ManagedObjectReference* root,
                               KELib::KEVector<KELib::KEString>& list,
                               KELib::Xml::KEXmlBuffer& xml);

  // Watches::CreateFilter, DestroyFilter and DestroyMethods.
  KE::Stub::ManagedObjectReference* CreatePropFilter(KE::Stub::ManagedObjectReference* root,
                                                     KELib::KEVector<KELib::KEString>& list,
                                                     KELib::KEWaiter* waiter);
  void DestroyPropFilter(KE::Stub::ManagedObjectReference* filter);
  void DestroyPropMethod(KE::Stub::ManagedObjectReference* ref);

  // PropertyMethods::Run and ForgetPermissions.
  void PropMethodToCache();
  void CleanupSessionUserPermissions();

  // Makes the server end the pending wait.
  void RestartDataSync();

  // SyncLoop::Start and Run.
  void StartSyncData();
  void SyncData();

  // Applies a whole update set, and lets go of the waiters of those watches whose data it brought.
  // Throws what the reader and the caches throw; what was applied before stays.
  void UpdateSetToCache(UpdateInfo& ui, KELib::Xml::KEXmlReader& r);

  // Takes the caches of the current object's type, in the library's order.
  void LockCaches(KE::Instance::KEMultiCacheLock& lock, UpdateInfo& ui);

  // Applies the value at `r` to the current object: a text, or a list.
  void UpdateSimpleType(UpdateInfo& ui, KELib::Xml::KEXmlReader& r);
  void UpdateComplexType(UpdateInfo& ui, KELib::Xml::KEXmlReader& r);

  // Apply a list's items, or one item, to the caches of its ends, of which the caller holds the
  // mutexes. `seen`, which may be null, collects the keys of the items.
  void UpdateArrayOfComplexType(UpdateInfo& ui, KELib::Xml::KEXmlReader& r,
                                KE::Instance::KEDataCache* primary,
                                KE::Instance::KEDataCache* secondary);
  void UpdateSingleComplexType(UpdateInfo& ui, KELib::Xml::KEXmlReader& r,
                               KE::Instance::KEDataCache* primary,
                               KE::Instance::KEDataCache* secondary,
                               KELib::KEHashmap<KELib::KEString, bool>* seen);

  // Deletes the stubs of `cache` (null: nothing) whose keys are not in `seen`. The caller holds the
  // cache's mutex.
  void ProcessArrayDeletes(KE::Instance::KEDataCache* cache,
                           KELib::KEHashmap<KELib::KEString, bool>& seen);

  // The text of the next element `tag`; empty without one. The cache is not looked at.
  void GetAssociatedType(const char* tag, KE::Instance::KEDataCache* cache,
                         KELib::Xml::KEXmlReader& r, KELib::KEString& out);

  // Remove the current object.
  void UpdateMissingType(UpdateInfo& ui, KELib::Xml::KEXmlReader& r);
  void UpdateObjectLeave(UpdateInfo& ui, KELib::Xml::KEXmlReader& r);

  KELib::KEMutex* GetMutex() KECPP_RETURN_CAPABILITY(mutex) { return mutex.get(); }

  // The record of a filter, which a walk over an update set puts into `UpdateInfo::syncInfo`; null
  // when it is not watched (any more). Guarded by `mutex`.
  DataSyncInfo* FindFilter(KE::Stub::ManagedObjectReference& filter);

 private:
  class FeedHold;

  void ReviveAfterStop(FeedHold& feeds);
  void ForgetEverything();
  void ForgetWatches();

  // The fields down to `stopRequested` are promised. The helpers below borrow them.

  // Constant after Init.
  KEMethod* method = nullptr;
  KE::Stub::ManagedObjectReference* propertyCollector = nullptr;

  // Written by the thread that runs a cycle; cleared by others only while no cycle runs.
  KELib::KEString version;

  std::unique_ptr<KE::Instance::KETypeCache> typeCache;  // constant after Init; own locks

  // Guarded by `mutex`. Only `watches` uses them.
  std::unique_ptr<Filters> filters KECPP_PT_GUARDED_BY(mutex);
  std::unique_ptr<MethodInfos> methodInfos KECPP_PT_GUARDED_BY(mutex);

  std::atomic<bool> initialCycleDone{false};
  std::atomic<bool> started{false};

  std::unique_ptr<KELib::KEMutex> mutex;

  std::atomic<bool> stopRequested{false};

  // Made by the constructor; own locks.
  std::unique_ptr<SyncState> state;
  std::shared_ptr<KE::Instance::ChangeHub> changes;
  std::unique_ptr<SyncStopper> stopper;

  // Made by Init, null before. Each uses those above it.
  std::unique_ptr<ServerCalls> server;
  std::unique_ptr<Watches> watches;
  std::unique_ptr<UpdateSets> updateSets;
  std::unique_ptr<PropertyMethods> propertyMethods;
  std::unique_ptr<SyncLoop> loop;
};

}  // namespace KE::Service

#endif
