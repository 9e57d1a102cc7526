// SPDX-License-Identifier: MIT
//
// The data sync: the tables of watches, the loop that waits for updates, and the caches.
//
// Sources, by concern: KEDataSyncImpl.cpp (life, tables, registration), SyncLoop.cpp (the loop and
// its thread), PropertyMethods.cpp, TaskWaiting.cpp, UpdateSets.cpp (what is applied, by the
// helpers in UpdateSetWalk, ObjectTarget and ListValue).
//
// Locks, outermost first: `mutex` (the filter-table mutex), the type cache's, the data caches',
// then
//   the leaf inside `state`. "CreateFilter" and "DestroyPropertyFilter" are sent while `mutex` is
//   held, so that no update set of a filter can be looked at before the filter is recorded. No
//   other call is: waiting for updates, cancelling it and invoking property methods hold no lock.
#ifndef KECPP_DATASYNC_KEDATASYNCIMPL_H
#define KECPP_DATASYNC_KEDATASYNCIMPL_H

#include <atomic>
#include <memory>
#include <string>

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

namespace KE::Service {

class PropertyMethods;
class ServerCalls;
class SyncState;
class UpdateSets;
class Watches;
struct TaskWait;

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

  // --- the filter's request (datasync/FilterSpec.h) ----------------------------------------------

  // The functions of these names; see there.
  static void CreatePropertySet(KELib::KEVector<KELib::KEString>& list,
                                KELib::Xml::KEXmlBuffer& xml);
  static void CreateSelectSet(KELib::KEVector<KELib::KEString>& list, KELib::Xml::KEXmlBuffer& xml);
  static void CreateObjectSet(KE::Stub::ManagedObjectReference* root,
                              KELib::KEVector<KELib::KEString>& list, KELib::Xml::KEXmlBuffer& xml);
  static void CreateFilterSpec(KE::Stub::ManagedObjectReference* root,
                               KELib::KEVector<KELib::KEString>& list,
                               KELib::Xml::KEXmlBuffer& xml);

  // --- watches -----------------------------------------------------------------------------------

  // Creates the filter on the server and records it; takes the filter-table mutex. Any failure is
  // logged as "Exception Creating PropFilter : ..." and thrown as Exception.
  KE::Stub::ManagedObjectReference* CreatePropFilter(KE::Stub::ManagedObjectReference* root,
                                                     KELib::KEVector<KELib::KEString>& list,
                                                     KELib::KEWaiter* waiter);

  // Asks the server to destroy the filter and removes its record, also when the server fails, and
  // with it the methods that no other list names. The record's waiter is signalled.
  void DestroyPropFilter(KE::Stub::ManagedObjectReference* filter);

  // Removes the record of property methods, however many lists name it, and the stubs of its cache
  // types that no other record names. Its waiter is signalled.
  void DestroyPropMethod(KE::Stub::ManagedObjectReference* ref);

  // Invokes every registered property method and applies the answers, except that a method that
  // failed is left out until a second has passed. A failure keeps no other method from being
  // invoked; the first one is thrown in the end. Holds no lock while it invokes; runs are
  // serialised.
  void PropMethodToCache();

  // Empties the caches of roles, privileges and identities, under their mutexes. Never throws.
  void CleanupSessionUserPermissions();

  // --- the loop ----------------------------------------------------------------------------------

  // Makes the server end the pending wait.
  void RestartDataSync();

  // Runs the first cycle on the calling thread and starts the sync thread; nothing while it runs or
  // without a watch. Throws SystemException "Failed to start Sync thread".
  void StartSyncData();

  // One cycle while the first one is to be done, otherwise cycles until no watch is left or a stop
  // is requested.
  void SyncData();

  // What the sync thread runs: SyncData, then its last word. Never throws.
  bool RunThread() noexcept;

  // RequestStop, unless one is in force: a watch that was set up since the last one has ended it.
  void RenewStop();

  // Stops the loop, lets every blocked caller go and waits until all have left. False when some
  // thread is still inside after 75 seconds: then nothing of the object may be destroyed. Until
  // Cleanup ends, new entries are refused.
  bool End();

  // --- applying update sets (on the sync thread; each takes the locks that it needs) -------------

  // Applies a whole update set, and lets go of the waiters of those watches whose data it brought.
  // Throws what the reader and the caches throw; what was applied before stays.
  void UpdateSetToCache(UpdateInfo& ui, KELib::Xml::KEXmlReader& r);

  // Takes the caches of the current object's type, in the library's order.
  void LockCaches(KE::Instance::KEMultiCacheLock& lock, UpdateInfo& ui);

  // Applies the value on which `r` stands to the current object: a text, or a list.
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
  // when it is not watched (any more). Takes the filter-table mutex, which guards the record.
  DataSyncInfo* FindFilter(KE::Stub::ManagedObjectReference& filter);

 private:
  enum class Outcome { good, empty, timedOut, cancelled, incomplete, failed, stopped };
  class LoopPause;

  // life
  void ReviveAfterStop();
  void AwaitStoppedLoop();
  void ForgetEverything();
  void ForgetWatches();

  // loop
  void RunFirstCycle();
  void StartThread();
  bool TryLeave(bool escaped);
  Outcome RunCycle();
  template <typename Step>
  Outcome Guarded(Step step);
  Outcome WaitAndApply();
  Outcome ApplyResponse(KELib::KEString& response);
  Outcome HandleFailure(const char* text);
  Outcome DestroyUnknownFilter(KE::Stub::ManagedObjectReference& filter);
  void CheckDaemon();
  void ReadVersion(KELib::Xml::KEXmlReader& r);
  void ForgetVersion();
  void SettleReports();
  void EndAnswer(bool advanced);
  Outcome EndSilence();
  int BeginWait();
  bool AwaitsMore();
  void AskForEverythingLater();
  void BackOff(Outcome outcome, long long cycleMilliseconds);
  void NoteFailedCycle(const char* text);

  // Constant after Init.
  KEMethod* method = nullptr;
  KE::Stub::ManagedObjectReference* propertyCollector = nullptr;

  // Written by the thread that runs a cycle; cleared by others only while no cycle runs.
  KELib::KEString version;

  std::unique_ptr<KE::Instance::KETypeCache> typeCache;  // constant after Init; own locks

  // Guarded by `mutex`.
  std::unique_ptr<Filters> filters KECPP_PT_GUARDED_BY(mutex);
  std::unique_ptr<MethodInfos> methodInfos KECPP_PT_GUARDED_BY(mutex);

  std::atomic<bool> initialCycleDone{false};
  std::atomic<bool> started{false};

  std::unique_ptr<KELib::KEMutex> mutex;

  std::atomic<bool> stopRequested{false};

  std::unique_ptr<SyncState> state;                  // own lock
  std::unique_ptr<ServerCalls> server;               // made by Init
  std::unique_ptr<Watches> watches;                  // made by Init
  std::unique_ptr<UpdateSets> updateSets;            // made by Init
  std::unique_ptr<PropertyMethods> propertyMethods;  // made by Init
  unsigned int failuresInARow = 0;      // of the thread that runs a cycle; for the back-off
  unsigned int cancelsInARow = 0;       // likewise
  Outcome lastOutcome = Outcome::good;  // of the thread that runs a cycle
  bool waitWasSilent = false;           // likewise: nothing of an answer came to the last wait
};

}  // namespace KE::Service

#endif
