// SPDX-License-Identifier: MIT
#include "datasync/TaskWaiting.h"

#include "datasync/DataSyncConstants.h"
#include "datasync/KEDataSync.h"
#include "datasync/SyncState.h"
#include "datasync/WaiterHolder.h"
#include "datasync/Watches.h"
#include "foundation/KEMutexGuard.h"
#include "foundation/Logger.h"
#include "instance/CacheConversion.h"
#include "instance/KECacheGuard.h"
#include "stub/base/KEStubRef.h"
#include "stub/classes/ClassNames.h"
#include "stub/classes/TaskInfo.h"
#include "xml/KEXmlReader.h"

namespace KE::Service {

namespace {

using KE::Stub::ManagedObjectReference;
using KELib::KEMutexGuard;
using KELib::KEString;

// Reads the task's reference. The reader works on a copy: the answer stays the caller's.
void ReadTask(KEString& response, ManagedObjectReference& task) {
  KELib::Xml::KEXmlReader reader(response, true, 0);
  ManagedObjectReference* target = &task;
  KE::Instance::ConvertManagedObjectReference(ReturnVal, reader, target);
}

}  // namespace

TaskWaiting::TaskWaiting(Watches& owner, SyncState& syncState, KE::Instance::KETypeCache& typeCache)
    : watches(owner), state(syncState), types(typeCache) {}

bool TaskWaiting::WaitForTask(KEDataSync& sync, KEString& response, KELib::KEWaiter* waiter) {
  if (waiter == nullptr) {
    KELib::Logging::Log(nullptr, KELib::Logging::LOG_LEVEL_VERBOSE,
                        "No waiter provided to wait for task.");
    return false;
  }
  SyncState::CallScope scope(state);
  ManagedObjectReference task;
  ReadTask(response, task);

  KELib::KEVector<KEString> list;
  for (const char* element : {PropSep, ObjectSep, TypeTask, TaskInfoState}) {
    KEString text(element);
    list.Add(text);
  }
  const unsigned long long stopsBefore = state.Stops();
  ManagedObjectReference* filter = sync.SetupDataSync(&task, list, waiter);
  // A stop, of everything or of this filter, may have freed the reference while this thread waited.
  KEMutexGuard guard(watches.GetMutex());
  const bool isWatched =
      watches.FindOwnFilterNoLock(filter) != nullptr && state.Stops() == stopsBefore;
  if (!isWatched) watches.ReleaseNoLock(waiter);  // the caller may destroy it now
  const bool succeeded = TakeTaskResult(task);
  if (isWatched) watches.DestroyFilter(filter);
  return succeeded;
}

std::shared_ptr<TaskWait> TaskWaiting::BlockOnTask(const ManagedObjectReference* filter,
                                                   unsigned long long stopsBefore) {
  auto wait = std::make_shared<TaskWait>();
  KEMutexGuard guard(watches.GetMutex());
  if (state.Stops() != stopsBefore) return nullptr;
  DataSyncInfo* info = watches.FindOwnFilterNoLock(filter);
  if (info == nullptr || info->waiter == nullptr) return nullptr;
  info->waiter->blocked = wait;
  return wait;
}

// Removes the task's stub. True when there was one and its state is "success".
bool TaskWaiting::TakeTaskResult(ManagedObjectReference& task) {
  KEString type(KE::Stub::TaskInfoClass);
  KE::Instance::KECacheGuard caches(&types);
  caches.LockTasks();
  if (types.GetDataCache(type) == nullptr) return false;
  KELib::Stub::KEStubRef ref;
  types.GetVal(type, task.value, ref);
  auto* info = dynamic_cast<KE::Stub::TaskInfo*>(ref.GetData());
  if (info == nullptr) return false;
  const bool succeeded = info->state.Equals(SuccessStr);
  types.RemoveValNoLock(type, task.value);
  return succeeded;
}

}  // namespace KE::Service
