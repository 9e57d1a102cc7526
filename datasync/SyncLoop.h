// SPDX-License-Identifier: MIT
//
// The loop that waits for updates and applies them, its thread, and what it does when something
// goes wrong.
//
// One thread at a time runs cycles: the caller that makes the first one, then the sync thread. No
// lock is held while the server is waited for.
//
// Thread safety: Start, Run and RunThread as KEDataSyncImpl's operations; Revive while no cycle
// runs. Ownership: borrows what it is made with; all of it outlives the object.
#ifndef KECPP_DATASYNC_SYNCLOOP_H
#define KECPP_DATASYNC_SYNCLOOP_H

#include <atomic>

#include "foundation/KEString.h"
#include "instance/KETypeCache.h"
#include "stub/classes/ManagedObjectReference.h"

namespace KELib::Xml {
class KEXmlReader;
}

namespace KE::Service {

class KEDataSyncImpl;
class PropertyMethods;
class ServerCalls;
class SyncState;
class UpdateSets;
class Watches;

class SyncLoop {
 public:
  // Fields of the data sync that are the loop's to use.
  struct Fields {
    KELib::KEString& version;  // of the last update set; of the thread that runs a cycle
    std::atomic<bool>& initialCycleDone;
    std::atomic<bool>& started;
    const std::atomic<bool>& stopRequested;
    KE::Instance::KETypeCache& typeCache;
  };

  // Helpers of the data sync.
  struct Helpers {
    Watches& watches;
    UpdateSets& updateSets;
    PropertyMethods& propertyMethods;
    ServerCalls& server;
    SyncState& state;
  };

  // `owner` is what the thread's work is made for; the loop calls nothing of it.
  SyncLoop(KEDataSyncImpl& owner, const Fields& fields, const Helpers& helpers);
  SyncLoop(const SyncLoop&) = delete;
  SyncLoop& operator=(const SyncLoop&) = delete;

  // Runs the first cycle on the calling thread and starts the sync thread; nothing while it runs or
  // without a watch. Throws SystemException "Failed to start Sync thread".
  void Start();

  // One cycle while the first one is to be done, otherwise cycles until no watch is left or a stop
  // is requested.
  void Run();

  // What the sync thread runs: Run, then its last word, after which it touches nothing of the data
  // sync. False when an exception escaped. Never throws.
  bool RunThread() noexcept;

  // After a stop: the next cycle is a first one.
  void Revive();

 private:
  enum class Outcome { good, empty, timedOut, cancelled, incomplete, failed, stopped };
  class LoopPause;

  void RunFirstCycle();
  void EndWithoutThread();
  bool AwaitsMore();
  void StartThread();
  bool TryLeave(bool escaped);
  Outcome RunCycle();
  template <typename Step>
  Outcome Guarded(Step step);
  Outcome HandleFailure(const char* text);
  void NoteFailedCycle(const char* text);
  void CheckDaemon();
  Outcome WaitAndApply();
  int BeginWait();
  Outcome Apply(KELib::Xml::KEXmlReader& answer);
  void ReadVersion(KELib::Xml::KEXmlReader& r);
  void ForgetVersion();
  void AskForEverythingLater();
  void EndAnswer(bool advanced);
  Outcome EndSilence();
  Outcome DestroyUnknownFilter(KE::Stub::ManagedObjectReference& filter);
  void SettleReports();
  void BackOff(Outcome outcome, long long cycleMilliseconds);

  KEDataSyncImpl& owner;
  KELib::KEString& version;
  std::atomic<bool>& initialCycleDone;
  std::atomic<bool>& started;
  const std::atomic<bool>& stopRequested;
  KE::Instance::KETypeCache& typeCache;

  Watches& watches;
  UpdateSets& updateSets;
  PropertyMethods& propertyMethods;
  ServerCalls& server;
  SyncState& state;

  // Of the thread that runs a cycle.
  unsigned int failuresInARow = 0;  // for the back-off
  unsigned int cancelsInARow = 0;
  Outcome lastOutcome = Outcome::good;
  bool waitWasSilent = false;  // nothing of an answer came to the last wait
};

}  // namespace KE::Service

#endif
