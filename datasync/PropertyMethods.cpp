// SPDX-License-Identifier: MIT
#include "datasync/PropertyMethods.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "datasync/DataSyncConstants.h"
#include "datasync/ListValue.h"
#include "datasync/ServerCalls.h"
#include "datasync/SyncState.h"
#include "datasync/Watches.h"
#include "foundation/KEException.h"
#include "foundation/KEMutexGuard.h"
#include "foundation/Logger.h"
#include "instance/ChangeHub.h"
#include "instance/KECacheGuard.h"
#include "instance/KEDataCache.h"
#include "stub/classes/ClassNames.h"
#include "xml/KEXmlReader.h"

namespace KE::Service {

namespace {

using KE::Stub::ManagedObjectReference;
using KELib::KEMutexGuard;
using KELib::KEString;

// After a failure the loop calls a method again in a cycle that comes after the first pause. A wait
// is ended for that after pauses that double up to the longest.
constexpr std::chrono::milliseconds kFirstPause(1000), kLongestPause(60000);

// Calls `use` with the text of a failure.
template <typename Use>
void WithText(const std::exception_ptr& error, Use use) {
  try {
    std::rethrow_exception(error);
  } catch (const KELib::Throwable& e) {
    use(e.What());
  } catch (const std::exception& e) {
    use(e.what());
  } catch (...) {
    use("Unknown Exception");
  }
}

void LogFailure(const char* text) {
  KELib::Logging::Log(nullptr, KELib::Logging::LOG_LEVEL_VERBOSE,
                      "Exception Invoking property methods : %s", text);
}

}  // namespace

PropertyMethods::PropertyMethods(Watches& owner, ServerCalls& serverCalls, SyncState& syncState,
                                 KE::Instance::KETypeCache& typeCache,
                                 const std::atomic<bool>& stop)
    : watches(owner),
      server(serverCalls),
      state(syncState),
      types(typeCache),
      stopRequested(stop) {}

// One invocation of a run: copies, since the record may go while the server is being asked.
struct PropertyMethods::MethodCall {
  ManagedObjectReference record;
  ManagedObjectReference target;
  KEString name;
  std::size_t index = 0;     // of the method in its record
  std::exception_ptr error;  // null: it answered
};

// `always` is the value of a record whose methods are due whatever became of their last calls.
std::vector<PropertyMethods::MethodCall> PropertyMethods::CallsToMake(const KEString* always) {
  std::vector<MethodCall> calls;
  const SyncTime now = GetSyncSeams().now();
  KEMutexGuard guard(watches.GetMutex());
  for (auto it = watches.MethodsNoLock().Begin(); !it.End(); ++it) {
    MethodDataSyncInfo* info = it->value;
    const bool isSetUp = always != nullptr && info->reference->value.Equals(always->Cstr());
    for (unsigned int i = 0; i < info->methods.Count(); ++i) {
      const MethodOutcome& outcome = info->outcomes[i];
      if (!isSetUp && outcome.notBefore > now) continue;
      MethodCall& call = calls.emplace_back();
      call.record.value = info->reference->value;
      call.target.type = info->target.type;
      call.target.value = info->target.value;
      call.name = info->methods[i];
      call.index = i;
    }
  }
  return calls;
}

// Returns the calls that failed. One that fails keeps no other from being made.
std::vector<PropertyMethods::MethodCall> PropertyMethods::RunMethods(const KEString* always) {
  KEMutexGuard run(&methodRun);
  bool applied = false;
  std::vector<MethodCall> calls = CallsToMake(always);
  for (MethodCall& call : calls) {
    if (stopRequested) break;
    try {
      if (RunMethod(call)) applied = true;
    } catch (...) {
      call.error = std::current_exception();
    }
    NoteMethodOutcome(call);
  }
  watches.ReleaseAnsweredMethods();
  // Counted besides the update set that they follow: who read after that set reads again.
  if (applied) state.NoteApplied(!watches.HasFilters());
  const auto answered = [](const MethodCall& call) { return call.error == nullptr; };
  calls.erase(std::remove_if(calls.begin(), calls.end(), answered), calls.end());
  return calls;
}

// True when the answer was applied; an empty one changes nothing.
bool PropertyMethods::RunMethod(MethodCall& call) {
  KEString response;
  server.InvokeMethod(call.name, call.target, response);
  if (response.Empty()) return false;
  ApplyMethodAnswer(call, response);
  return true;
}

void PropertyMethods::NoteMethodOutcome(MethodCall& call) {
  KEMutexGuard guard(watches.GetMutex());
  MethodDataSyncInfo* info = watches.FindMethodsNoLock(call.record);
  if (info == nullptr || call.index >= info->outcomes.size()) return;
  MethodOutcome& outcome = info->outcomes[call.index];
  if (call.error == nullptr) {
    outcome = MethodOutcome();
    outcome.last = MethodOutcome::Last::answered;
    return;
  }
  const SyncTime now = GetSyncSeams().now();
  outcome.last = MethodOutcome::Last::failed;
  outcome.pause = std::clamp(outcome.pause * 2, kFirstPause, kLongestPause);
  outcome.notBefore = now + kFirstPause;
  outcome.due = now + outcome.pause;
  WithText(call.error, [&](const char* text) { outcome.failure = text; });
}

void PropertyMethods::Run() {
  const std::vector<MethodCall> failed = RunMethods(nullptr);
  if (!failed.empty()) std::rethrow_exception(failed.front().error);
}

// The watch is refused for a failure of the methods that it asked for, and for no other.
void PropertyMethods::RunAtSetup(const KEString& record) {
  std::exception_ptr refusal;
  for (const MethodCall& call : RunMethods(&record)) {
    WithText(call.error, LogFailure);
    if (refusal == nullptr && call.record.value.Equals(record.Cstr())) refusal = call.error;
  }
  if (refusal != nullptr) std::rethrow_exception(refusal);
}

// The wait was good: a failing method is neither a reason to look for the daemon nor to pause.
void PropertyMethods::RunInCycle() {
  const std::vector<MethodCall> failed = RunMethods(nullptr);
  if (stopRequested) return;
  for (const MethodCall& call : failed) {
    try {
      std::rethrow_exception(call.error);
    } catch (const KELib::RequestFailedException&) {
      throw;  // ends the process, as out of a wait
    } catch (const KELib::NoPermissionException& e) {
      LosePermissions(e.What());
    } catch (...) {
      WithText(call.error, LogFailure);
    }
  }
  NoteFailedMethods();
}

// A cycle at whose end methods have not answered is one failure, however many they are, and also
// when none of them was due.
void PropertyMethods::NoteFailedMethods() {
  KEMutexGuard guard(watches.GetMutex());
  for (auto it = watches.MethodsNoLock().Begin(); !it.End(); ++it) {
    for (const MethodOutcome& outcome : it->value->outcomes) {
      if (outcome.last == MethodOutcome::Last::failed) {
        state.NoteFailure(outcome.failure.Cstr());
        return;
      }
    }
  }
}

SyncTime PropertyMethods::WaitEnd() {
  SyncTime end = SyncTime::max();
  KEMutexGuard guard(watches.GetMutex());
  for (auto it = watches.MethodsNoLock().Begin(); !it.End(); ++it) {
    for (const MethodOutcome& outcome : it->value->outcomes) {
      if (outcome.last == MethodOutcome::Last::failed) end = std::min(end, outcome.due);
    }
  }
  return end;
}

void PropertyMethods::ApplyMethodAnswer(MethodCall& call, KEString& response) {
  KELib::Xml::KEXmlReader reader(response, false, 0);
  UpdateInfo ui(ReturnVal, ReturnVal);
  ui.name = call.name;
  KEMutexGuard guard(watches.GetMutex());
  if (watches.FindMethodsNoLock(call.record) == nullptr)
    return;  // stopped while the server was asked
  const KE::Instance::ChangeHub::Batch batch(types.Changes());
  ListValue::ApplyAt(ui, reader, types, watches.RolesNoLock());
}

void PropertyMethods::LosePermissions(const char* text) {
  KELib::Logging::Log(nullptr, KELib::Logging::LOG_LEVEL_VERBOSE, "%s", text);
  KELib::Logging::Log(nullptr, KELib::Logging::LOG_LEVEL_VERBOSE,
                      "KECimProvider stopping datasync. Session Authentication revoked.");
  ForgetPermissions();
}

void PropertyMethods::ForgetPermissions() {
  try {
    KEMutexGuard guard(watches.GetMutex());
    KE::Instance::KECacheGuard caches(&types);
    caches.LockAuthorization();
    for (const char* name : {KE::Stub::Zorbel_RoleClass, KE::Stub::Zorbel_PrivilegeClass,
                             KE::Stub::Zorbel_IdentityClass}) {
      KEString type(name);
      KE::Instance::KEDataCache* cache = types.GetDataCache(type);
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
