// SPDX-License-Identifier: MIT
//
// What the data sync watches: the records of property filters and of property methods with their
// waiters, and what has to be remembered from one update set to the next.
//
// Locks: the filter-table mutex guards all of it. Operations whose names end in "NoLock" are for
//   callers that hold it; all others take it unless the calling thread holds it. "CreateFilter" and
//   "DestroyPropertyFilter" are sent while it is held, so that no update set of a filter can be
//   looked at before the filter is recorded. Below it come the mutexes of the data caches and the
//   leaf inside the sync state.
// Ownership: borrows the data sync's tables, their mutex and its type cache. The tables own their
//   records, a record owns its reference and its waiter's holder.
#ifndef KECPP_DATASYNC_WATCHES_H
#define KECPP_DATASYNC_WATCHES_H

#include <memory>

#include "datasync/DataSyncInfo.h"
#include "datasync/FullRequest.h"
#include "datasync/MethodDataSyncInfo.h"
#include "datasync/RoleMemory.h"
#include "datasync/StaleObjects.h"
#include "foundation/KEHashmap.h"
#include "foundation/KEMutex.h"
#include "foundation/KEThreadAnnotations.h"
#include "foundation/KEWaiter.h"
#include "instance/KETypeCache.h"
#include "stub/classes/ManagedObjectReference.h"

namespace KE::Service {

class PropertyList;
class ServerCalls;
class SyncState;
struct WaiterHolder;

class Watches {
 public:
  using Filters = KELib::KEHashmap<KE::Stub::ManagedObjectReference*, DataSyncInfo*>;
  using MethodInfos = KELib::KEHashmap<KE::Stub::ManagedObjectReference*, MethodDataSyncInfo*>;

  // All are borrowed and outlive the object.
  Watches(KELib::KEMutex& mutex, Filters& filters, MethodInfos& methodInfos,
          KE::Instance::KETypeCache& types, SyncState& state, ServerCalls& server);
  Watches(const Watches&) = delete;
  Watches& operator=(const Watches&) = delete;

  KELib::KEMutex* GetMutex() KECPP_RETURN_CAPABILITY(mutex) { return &mutex; }

  // --- both tables -------------------------------------------------------------------------------

  bool Any();
  bool AnyNoLock() KECPP_REQUIRES(mutex);

  // Takes back what a setup that failed has recorded, and releases its waiter. `filter` and
  // `methods` are what CreateFilter and RegisterMethods returned, or null; another thread may have
  // stopped the watch, and freed them. `stopsBefore`: how many stops the setup began after.
  void Abandon(KE::Stub::ManagedObjectReference* filter, KE::Stub::ManagedObjectReference* methods,
               KE::Stub::ManagedObjectReference& methodsKey,
               unsigned long long stopsBefore) noexcept;

  // Forgets every record and all that is remembered of them; their waiters are signalled. Needs no
  // memory.
  void ForgetNoLock() KECPP_REQUIRES(mutex);

  // --- filters -----------------------------------------------------------------------------------

  bool HasFilters();
  bool HasFiltersNoLock() KECPP_REQUIRES(mutex);

  // Creates the filter on the server and records it. `waiter` may be null. Throws SystemException
  // for a list that breaks the grammar; any other failure is logged as "Exception Creating
  // PropFilter : ..." and thrown as Exception.
  KE::Stub::ManagedObjectReference* CreateFilter(KE::Stub::ManagedObjectReference* root,
                                                 const PropertyList& list, KELib::KEWaiter* waiter);

  // Asks the server to destroy the filter and removes its record, also when the server fails, and
  // with it the methods that no other list names. The record's waiter is signalled.
  void DestroyFilter(KE::Stub::ManagedObjectReference* filter);

  // The record of a filter; null when it is not watched (any more).
  DataSyncInfo* FindFilterNoLock(KE::Stub::ManagedObjectReference& filter) KECPP_REQUIRES(mutex);

  // Another number whenever a record has come or gone: until then what was found is still right.
  // Never 0.
  unsigned long long FilterGenerationNoLock() const KECPP_REQUIRES(mutex) { return generation; }

  // The record that the calling thread made and to which `reference` belongs; null when it has
  // gone. `reference` may be freed.
  DataSyncInfo* FindOwnFilterNoLock(const KE::Stub::ManagedObjectReference* reference)
      KECPP_REQUIRES(mutex);

  // The classes that the filters watch.
  StaleObjects::Classes ClassesNoLock() KECPP_REQUIRES(mutex);

  // --- property methods --------------------------------------------------------------------------

  bool HasMethods();
  MethodInfos& MethodsNoLock() KECPP_REQUIRES(mutex) { return methodInfos; }

  // Records the methods of a list, and names the record in `key`. `filter`: what the same list made
  // before, or null. Null when another thread has stopped that filter already.
  KE::Stub::ManagedObjectReference* RegisterMethods(KE::Stub::ManagedObjectReference* root,
                                                    const PropertyList& sections,
                                                    KE::Stub::ManagedObjectReference* filter,
                                                    KELib::KEWaiter* waiter,
                                                    KE::Stub::ManagedObjectReference& key);

  // Ends one of the lists without properties that named these methods.
  void StopMethodsNoLock(KE::Stub::ManagedObjectReference& ref) KECPP_REQUIRES(mutex);

  // Removes the record of property methods, however many lists name it, and the stubs of its cache
  // types that no other record names. Its waiter is signalled.
  void DestroyMethods(KE::Stub::ManagedObjectReference* ref);

  MethodDataSyncInfo* FindMethodsNoLock(KE::Stub::ManagedObjectReference& ref)
      KECPP_REQUIRES(mutex);

  // --- waiters -----------------------------------------------------------------------------------

  // Signals the record's waiter, if it has one.
  void ReleaseWaiterNoLock(std::unique_ptr<WaiterHolder>& waiter) KECPP_REQUIRES(mutex);

  // The record's first data is there: as ReleaseWaiterNoLock, unless a task is awaited or what is
  // cached of the watched classes is not known to be true yet.
  void ReleaseFilledNoLock(DataSyncInfo& info) KECPP_REQUIRES(mutex);

  // Signals a waiter that a record still holds.
  void ReleaseNoLock(KELib::KEWaiter* waiter) KECPP_REQUIRES(mutex);

  void ReleaseAllNoLock() KECPP_REQUIRES(mutex);

  // An update set was applied, or its end was not reached.
  void ReleaseAfterSet(bool cutShort);

  // Cycles failed again and again: nobody is kept waiting for a task or for the end of a report.
  void ReleaseAfterFailures();

  // A wait stayed unanswered: a report that ends in silence had nothing to say, and that is the
  // first data of those who wait for it.
  void HoldForReportsNoLock() KECPP_REQUIRES(mutex);

  // Of the filters whose first data is there: those whose classes are true by now.
  void ReleaseHeld();

  // Those of the methods' records whose methods have all answered.
  void ReleaseAnsweredMethods();

  // --- what is remembered from set to set --------------------------------------------------------

  RoleMemory& RolesNoLock() KECPP_REQUIRES(mutex) { return roles; }
  StaleObjects& StaleNoLock() KECPP_REQUIRES(mutex) { return stale; }
  FullRequest& RequestNoLock() KECPP_REQUIRES(mutex) { return fullRequest; }

 private:
  KE::Stub::ManagedObjectReference* RecordFilterNoLock(
      std::unique_ptr<KE::Stub::ManagedObjectReference> reference, const PropertyList& list,
      KELib::KEWaiter* waiter) KECPP_REQUIRES(mutex);
  void NoteFilterCameNoLock(DataSyncInfo& info, StaleObjects::Classes before) KECPP_REQUIRES(mutex);
  void RemoveFilterNoLock(KE::Stub::ManagedObjectReference& filter) KECPP_REQUIRES(mutex);
  void CreateCaches(const PropertyList& sections, KELib::KEVector<KELib::KEString>& cacheTypes);
  bool NamesMethodsNoLock(const MethodDataSyncInfo& methods, const DataSyncInfo* except)
      KECPP_REQUIRES(mutex);
  void LeaveMethodsNoLock(DataSyncInfo& filter) KECPP_REQUIRES(mutex);
  bool IsCacheNamedNoLock(KELib::KEString& type) KECPP_REQUIRES(mutex);
  void DropUnnamedStubsNoLock(KELib::KEVector<KELib::KEString>& cacheTypes) KECPP_REQUIRES(mutex);

  KELib::KEMutex& mutex;
  Filters& filters KECPP_GUARDED_BY(mutex);
  unsigned long long generation KECPP_GUARDED_BY(mutex) = 1;
  MethodInfos& methodInfos KECPP_GUARDED_BY(mutex);
  KE::Instance::KETypeCache& types;  // own locks
  SyncState& state;                  // own lock
  ServerCalls& server;

  RoleMemory roles KECPP_GUARDED_BY(mutex);
  StaleObjects stale KECPP_GUARDED_BY(mutex);
  FullRequest fullRequest KECPP_GUARDED_BY(mutex);
};

}  // namespace KE::Service

#endif
