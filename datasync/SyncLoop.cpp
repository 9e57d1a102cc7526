// SPDX-License-Identifier: MIT
#include "datasync/SyncLoop.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

#include "datasync/DataSyncConstants.h"
#include "datasync/KEDataSyncWorkImpl.h"
#include "datasync/PropertyMethods.h"
#include "datasync/ServerCalls.h"
#include "datasync/StaleObjects.h"
#include "datasync/SyncSeams.h"
#include "datasync/SyncState.h"
#include "datasync/UpdateSets.h"
#include "datasync/Watches.h"
#include "foundation/KECondition.h"
#include "foundation/KEException.h"
#include "foundation/KEMutexGuard.h"
#include "foundation/KEThread.h"
#include "foundation/Logger.h"
#include "instance/ChangeHub.h"
#include "instance/KECacheGuard.h"
#include "service/call/MgmtdWatch.h"
#include "service/call/MgmtdWatchSeams.h"
#include "xml/KEXmlCursor.h"
#include "xml/KEXmlReader.h"

namespace KE::Service {

namespace {

using KELib::KEMutexGuard;
using KELib::KEString;
using KELib::Logging::Log;
using KELib::Logging::LOG_LEVEL_ERROR;
using KELib::Logging::LOG_LEVEL_VERBOSE;
using Clock = std::chrono::steady_clock;

// How long a first cycle goes on for the rest of a report that a server is slow to end.
constexpr std::chrono::seconds kLongestFirstCycle{60};

// After this many failed cycles in a row nobody is kept waiting for the next one.
constexpr unsigned int kFailuresToGiveUp = 3;

// A failed cycle that took less is followed by a pause.
constexpr long long kShortCycleMs = 1000;

// The fault by which the server ends a cancelled wait, as the method layer hands it on.
const char* const kCanceledFault = "RequestCanceled";

// At least one; 0 when `end` is SyncTime::max().
int MillisecondsTo(SyncTime end, SyncTime now) {
  if (end == SyncTime::max()) return 0;
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - now);
  return std::max(0, static_cast<int>(left.count())) + 1;
}

}  // namespace

// The pause inside a check of the daemon: ended by a stop. And the last word before `exit`, so that
// an exit handler which frees the library does not wait for this thread.
class SyncLoop::LoopPause : public MgmtdPause {
 public:
  explicit LoopPause(SyncLoop& owner) : loop(owner) {}
  bool Pause(int milliseconds) override {
    return loop.state.Pause(milliseconds, loop.stopRequested);
  }
  void BeforeExit() override { loop.state.LeaveForExit(loop.started); }

 private:
  SyncLoop& loop;
};

SyncLoop::SyncLoop(KEDataSyncImpl& dataSync, const Fields& fields, const Helpers& helpers)
    : owner(dataSync),
      version(fields.version),
      initialCycleDone(fields.initialCycleDone),
      started(fields.started),
      stopRequested(fields.stopRequested),
      typeCache(fields.typeCache),
      watches(helpers.watches),
      updateSets(helpers.updateSets),
      propertyMethods(helpers.propertyMethods),
      server(helpers.server),
      state(helpers.state) {}

// Without memory the check is left out: the next failure brings the next one.
void SyncLoop::CheckDaemon() {
  LoopPause pause(*this);
  try {
    CheckMgmtd(pause);
  } catch (const std::bad_alloc& e) {
    Log(nullptr, LOG_LEVEL_VERBOSE, "Could not look for a restarted daemon : %s", e.what());
  }
}

// --- starting and leaving ------------------------------------------------------------------------

void SyncLoop::Start() {
  if (started || !watches.Any()) return;
  if (!state.BeginFirstCycle(stopRequested)) return;
  try {
    if (!stopRequested) CheckDaemon();
    RunFirstCycle();
    if (!stopRequested && watches.Any()) return StartThread();
  } catch (const KELib::Exception& e) {
    EndWithoutThread();
    KEString text(e.What());
    throw KELib::Exception(text.Str(), text.Length());
  } catch (...) {
    EndWithoutThread();
    throw;
  }
  EndWithoutThread();
}

void SyncLoop::EndWithoutThread() {
  initialCycleDone = false;
  state.SetPhase(SyncState::Phase::idle);
}

// Repeats a failed first cycle, so that the caches are full when the caller goes on, and adds
// cycles until what is cached is true. A dead server must not hold the agent: the thread goes on
// trying after a time-out or three failures.
void SyncLoop::RunFirstCycle() {
  const SyncTime end = GetSyncSeams().now() + kLongestFirstCycle;
  for (unsigned int failures = 0; failures < kFailuresToGiveUp;) {
    initialCycleDone = false;
    Run();  // at once when there is a stop, or no watch any more
    if (lastOutcome == Outcome::good || lastOutcome == Outcome::timedOut) {
      if (!AwaitsMore() || GetSyncSeams().now() >= end) return;
      if (lastOutcome == Outcome::good) continue;
    }
    if (lastOutcome != Outcome::cancelled || cancelsInARow > 1) ++failures;
  }
}

// The last wait was answered, or was a short one, and the next one will bring more.
bool SyncLoop::AwaitsMore() {
  KEMutexGuard guard(watches.GetMutex());
  if (!watches.HasFiltersNoLock()) return false;
  StaleObjects& stale = watches.StaleNoLock();
  if (watches.RequestNoLock().Wanted() || stale.AwaitsPart()) return true;
  return lastOutcome == Outcome::good && stale.IsOpen(watches.ClassesNoLock());
}

void SyncLoop::StartThread() {
  auto work = std::make_unique<KEDataSyncWorkImpl>(&owner);
  KELib::KEThread* thread = KELib::CreateKEThread(work.get());
  if (thread == nullptr) throw KELib::SystemException("Failed to start Sync thread");
  work.release();  // the thread object owns it from here on
  started = true;
  state.SetPhase(SyncState::Phase::running);
  try {
    thread->Start();
  } catch (...) {
    started = false;
    delete thread;
    throw;
  }
}

void SyncLoop::Revive() {
  started = false;
  initialCycleDone = false;
  failuresInARow = cancelsInARow = 0;
}

bool SyncLoop::RunThread() noexcept {
  bool escaped = false;
  do {
    try {
      Run();
    } catch (...) {
      escaped = true;
    }
  } while (!TryLeave(escaped));
  return !escaped;
}

// The one step in which the loop ends: a watch that is added at this moment either is seen here,
// and the loop goes on, or finds the states reset and starts another loop.
bool SyncLoop::TryLeave(bool escaped) {
  KEMutexGuard guard(watches.GetMutex());
  if (watches.AnyNoLock() && !escaped && !stopRequested) return false;
  watches.ReleaseAllNoLock();
  if (!watches.HasFiltersNoLock()) ForgetVersion();
  initialCycleDone = false;
  started = false;
  state.SetPhase(SyncState::Phase::ending);
  guard.Release();
  state.ThreadLeaves();
  return true;
}

// --- the loop ------------------------------------------------------------------------------------

void SyncLoop::Run() {
  lastOutcome = Outcome::stopped;
  while (!stopRequested && watches.Any()) {
    const auto begin = Clock::now();
    lastOutcome = RunCycle();
    const auto took = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin);
    BackOff(lastOutcome, took.count());
    if (!initialCycleDone.exchange(true)) break;
  }
  if (!watches.HasFilters()) ForgetVersion();
}

// The next wait asks for everything.
void SyncLoop::ForgetVersion() {
  KEMutexGuard guard(watches.GetMutex());
  version.Clear();
  watches.StaleNoLock().ExpectEverything();
  watches.RequestNoLock().AtOnce();
}

SyncLoop::Outcome SyncLoop::RunCycle() {
  const Outcome outcome = Guarded([this] { return WaitAndApply(); });
  if (outcome != Outcome::good && outcome != Outcome::timedOut) return outcome;
  return Guarded([this, outcome] {
    propertyMethods.RunInCycle();
    return outcome;
  });
}

// Runs a step of the cycle; every failure ends here.
template <typename Step>
SyncLoop::Outcome SyncLoop::Guarded(Step step) {
  try {
    return step();
  } catch (const KE::RequestCanceledException&) {
    if (stopRequested) return Outcome::stopped;
    Log(nullptr, LOG_LEVEL_VERBOSE, "Restarting cancelled data sync.");
    return Outcome::cancelled;
  } catch (const KELib::RequestTimedOutException&) {
    if (stopRequested) return Outcome::stopped;
    Log(nullptr, LOG_LEVEL_VERBOSE, "Restarting timedout datasync.");
    const bool wasSilent = std::exchange(waitWasSilent, false);  // not so when a method timed out
    return server.CancelTimedOutWait() && wasSilent ? EndSilence() : Outcome::timedOut;
  } catch (const KELib::RequestFailedException& e) {
    if (stopRequested) return Outcome::stopped;
    Log(nullptr, LOG_LEVEL_VERBOSE, "%s", e.What());
    Log(nullptr, LOG_LEVEL_ERROR, "KECimProvider exiting on Mgmtd exit!!");
    state.LeaveForExit(started);
    GetMgmtdWatchSeams().exitProcess(EXIT_SUCCESS);
    return Outcome::stopped;
  } catch (const KELib::NoPermissionException& e) {  // a lost login among them
    if (stopRequested) return Outcome::stopped;
    propertyMethods.LosePermissions(e.What());
    NoteFailedCycle(e.What());
    return Outcome::failed;
  } catch (const KELib::Throwable& e) {
    return HandleFailure(e.What());
  } catch (const std::exception& e) {
    return HandleFailure(e.what());
  } catch (...) {
    return HandleFailure("Unknown Exception");
  }
}

SyncLoop::Outcome SyncLoop::HandleFailure(const char* text) {
  if (stopRequested) return Outcome::stopped;
  Log(nullptr, LOG_LEVEL_VERBOSE,
      "Exception Updating cache with UpdateSet : %s Continuing with wait for update.", text);
  const bool cancelled = std::strcmp(text, kCanceledFault) == 0;
  if (!cancelled) NoteFailedCycle(text);
  CheckDaemon();
  return cancelled ? Outcome::cancelled : Outcome::failed;
}

// A server that does not answer must hold nobody for ever who waits for a task or for the end of a
// report.
void SyncLoop::NoteFailedCycle(const char* text) {
  if (state.NoteFailure(text) >= kFailuresToGiveUp) watches.ReleaseAfterFailures();
}

SyncLoop::Outcome SyncLoop::WaitAndApply() {
  // Methods alone have no updates to wait for before their callers see the first data.
  if (!initialCycleDone && !watches.HasFilters()) return Outcome::good;
  KELib::Xml::KEXmlReader answer;
  if (!server.WaitForUpdates(version, BeginWait(), waitWasSilent, answer)) {
    return Outcome::stopped;
  }
  waitWasSilent = false;
  if (stopRequested) return Outcome::stopped;
  if (answer.GetInputLength() > 0) return Apply(answer);
  Log(nullptr, LOG_LEVEL_VERBOSE, "Empty Response. Resend WFU.");
  NoteFailedCycle("Empty Response. Resend WFU.");
  CheckDaemon();
  return Outcome::empty;
}

// Prepares what watches for stale objects, and returns how many milliseconds the next wait may stay
// unanswered; 0: as long as the connection allows.
int SyncLoop::BeginWait() {
  KEMutexGuard guard(watches.GetMutex());
  const SyncTime now = GetSyncSeams().now();
  StaleObjects& stale = watches.StaleNoLock();
  FullRequest& request = watches.RequestNoLock();
  const bool everything = request.Due(now);
  stale.BeginWait(everything, watches.ClassesNoLock(), typeCache);
  if (everything) {
    version.Clear();
    request.Sent();
  }
  if (stale.AwaitsPart()) return StaleObjects::kNextPartMs;
  SyncTime end = request.WaitEnd();
  // A server that may be at work on a report is not asked again for the sake of a method.
  if (!stale.AwaitsBegin()) end = std::min(end, propertyMethods.WaitEnd());
  return MillisecondsTo(end, now);
}

SyncLoop::Outcome SyncLoop::Apply(KELib::Xml::KEXmlReader& answer) {
  const KEString before(version);
  ReadVersion(answer);
  KE::Stub::ManagedObjectReference unknown;
  try {
    updateSets.Apply(answer, &unknown);
  } catch (...) {
    AskForEverythingLater();
    throw;
  }
  if (unknown.value.Empty()) EndAnswer(!version.Equals(before));
  state.NoteApplied(true);
  if (!unknown.value.Empty()) return DestroyUnknownFilter(unknown);
  state.NoteGoodCycle();
  return Outcome::good;
}

// The server takes the set for delivered. What it said is learned by asking for everything, but
// not at once: a set that cannot be applied may come again each time.
void SyncLoop::AskForEverythingLater() {
  KEMutexGuard guard(watches.GetMutex());
  watches.StaleNoLock().ExpectEverything();
  watches.RequestNoLock().AfterFailure(GetSyncSeams().now());
}

void SyncLoop::EndAnswer(bool advanced) {
  {
    KEMutexGuard guard(watches.GetMutex());
    watches.RequestNoLock().NoteWholeSet();
    watches.StaleNoLock().EndAnswer(advanced);
  }
  SettleReports();
}

SyncLoop::Outcome SyncLoop::EndSilence() {
  return Guarded([this] {
    {
      KEMutexGuard guard(watches.GetMutex());
      watches.HoldForReportsNoLock();
      watches.StaleNoLock().EndSilence();
    }
    SettleReports();
    return Outcome::timedOut;
  });
}

// The version comes before the filter sets; a filter set's texts are not searched for it.
void SyncLoop::ReadVersion(KELib::Xml::KEXmlReader& r) {
  KELib::Xml::KEXmlCursor cursor(r);
  KELib::Xml::XmlSlice name;
  while (cursor.NextChild(name)) {
    if (name.Is(VersionTag, std::strlen(VersionTag))) {
      KELib::KEStringBuffer joined(0);
      cursor.Text(name, joined).CopyTo(version);
      state.NoteVersion(version);
      cursor.MoveReader();
      return;
    }
    if (name.Is(FilterSet, std::strlen(FilterSet))) return;
    if (name.Is(ReturnVal, std::strlen(ReturnVal))) {
      if (!cursor.Enter()) return;
    } else {
      cursor.SkipElement(name);
    }
  }
}

// An update set spoke of a filter that nobody watches: the rest of the set was not applied, and the
// server would go on reporting it. Destroy it, and ask for everything once more.
SyncLoop::Outcome SyncLoop::DestroyUnknownFilter(KE::Stub::ManagedObjectReference& filter) {
  {
    KEMutexGuard guard(watches.GetMutex());
    watches.StaleNoLock().ExpectEverything();
    watches.RequestNoLock().AfterCut(GetSyncSeams().now());
  }
  server.DestroyFilter(filter);
  return Outcome::incomplete;
}

// Removes what the reports that are over have not named, and releases the waiters that waited for
// their end.
void SyncLoop::SettleReports() {
  const KE::Instance::ChangeHub::Batch batch(typeCache.Changes());
  for (KEString type, id;;) {  // a reader waits for one object at most
    KEMutexGuard guard(watches.GetMutex());
    const KE::Instance::ObjectKind* const kind = watches.StaleNoLock().StaleKind();
    if (kind == nullptr) break;
    KE::Instance::KECacheGuard caches(&typeCache);
    caches.LockKinds(kind->group);
    type = kind->cacheClass;
    watches.StaleNoLock().TakeStale(*kind, id);
    if (typeCache.GetDataCache(type) != nullptr) typeCache.RemoveValNoLock(type, id);
  }
  watches.ReleaseHeld();
}

// A failure that repeats must neither spin nor flood the log. Time-outs and cancels are none.
void SyncLoop::BackOff(Outcome outcome, long long cycleMilliseconds) {
  if (outcome == Outcome::good) failuresInARow = cancelsInARow = 0;
  if (outcome == Outcome::cancelled) ++cancelsInARow;
  // One cancelled wait is somebody's wish; a server that cancels every wait at once is a failure.
  const bool failed = outcome == Outcome::failed || outcome == Outcome::empty ||
                      outcome == Outcome::incomplete || cancelsInARow > 1;
  if (!failed) return;
  const int delays[] = {KELib::DELAY_10MSEC, KELib::DELAY_100MSEC, KELib::DELAY_1SEC};
  const unsigned int last = sizeof(delays) / sizeof(delays[0]) - 1;
  const unsigned int step = std::min(failuresInARow, last);
  ++failuresInARow;
  if (cycleMilliseconds < kShortCycleMs) state.Pause(delays[step], stopRequested);
}

}  // namespace KE::Service
