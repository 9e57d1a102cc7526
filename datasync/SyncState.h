// SPDX-License-Identifier: MIT
//
// Who is inside a data sync, what its thread does, and how everybody is woken: the hand-shake by
// which a data sync starts, stops and dies.
//
// One leaf mutex guards all of it, which is never held while another lock is taken or the
// network is waited for. So a stop can look at it and wait on it even while some thread holds the
// filter-table mutex across a call to a server that never answers.
#ifndef KECPP_DATASYNC_SYNCSTATE_H
#define KECPP_DATASYNC_SYNCSTATE_H

#include <atomic>
#include <memory>

#include "datasync/KEDataSync.h"
#include "foundation/KEMutex.h"
#include "foundation/KEQuietCondition.h"

namespace KE::Service {

// A thread that is blocked until its task has ended. Guarded by the sync state's mutex.
struct TaskWait {
  bool released = false;
};

class SyncState {
 public:
  enum class Phase {
    idle,        // no thread, no first cycle
    firstCycle,  // one caller makes the first cycle
    running,     // the sync thread runs
    ending       // the sync thread has decided to leave and is about to say so
  };

  SyncState() = default;
  SyncState(const SyncState&) = delete;
  SyncState& operator=(const SyncState&) = delete;

  // A caller's stay inside the data sync. Nested stays of one thread count each.
  class CallScope {
   public:
    // Throws SystemException while entries are refused.
    explicit CallScope(SyncState& state);
    ~CallScope();
    CallScope(const CallScope&) = delete;
    CallScope& operator=(const CallScope&) = delete;

   private:
    friend class SyncState;
    SyncState* state;  // null once the stay was ended early
    CallScope* outer;  // the same thread's enclosing stay, of whichever data sync
  };

  // --- phases ------------------------------------------------------------------------------------

  // Makes the caller the one that runs the first cycle (true). Waits while another thread does, and
  // while the sync thread is about to leave.
  // False when the loop runs already or a stop came.
  bool BeginFirstCycle(const std::atomic<bool>& stopRequested);

  // From the first cycle to the running thread, or back to idle.
  void SetPhase(Phase phase);
  Phase GetPhase();

  // Waits until no loop and no first cycle is left; at most `milliseconds`. True when that is so.
  // Throws SystemException while entries are refused.
  bool WaitUntilIdle(int milliseconds);

  // The last word of the sync thread: afterwards it touches nothing of the data sync.
  void ThreadLeaves();

  // For a thread that is about to end the process: it counts as gone from here on, whether it is
  // the sync thread or an agent's thread inside a call.
  void LeaveForExit(bool isSyncThread);

  // --- stopping ----------------------------------------------------------------------------------

  void RefuseEntries();
  void AcceptEntries();

  // Sets the stop flag, counts the stop and wakes every waiting call of the library, in one step.
  // So a thread that sees the flag sees the new count too, and knows that its records may be gone.
  void AnnounceStop(std::atomic<bool>& stopRequested);

  // How many stops were announced so far. While it stays the same nothing was forgotten.
  unsigned long long Stops();

  // Waits until the thread and all callers have left; at most `milliseconds`. True when they have.
  bool WaitUntilLeft(int milliseconds);

  // Pauses; false at once when a stop is requested or comes meanwhile.
  bool Pause(int milliseconds, const std::atomic<bool>& stopRequested);

  // --- waiting for tasks -------------------------------------------------------------------------

  void Release(TaskWait& wait);

  // Blocks until `wait` is released, a stop comes or no loop runs any more.
  void WaitForRelease(TaskWait& wait, const std::atomic<bool>& stopRequested);

  // --- what GetStatus says and WaitForChange waits for -------------------------------------------

  void NoteVersion(const KELib::KEString& version);
  void NoteApplied(bool isFill);  // what a watch begins with: not so for methods beside filters
  void NoteGoodCycle();
  unsigned int NoteFailure(const char* text) noexcept;  // the number of failures in a row
  void NoteStopped();                                   // the first fill is to be done again
  void GetStatus(KESyncStatus& out);
  bool WaitForChange(unsigned long long& seen, int milliseconds,
                     const std::atomic<bool>& stopRequested);

  std::atomic<bool> waitOut{false};  // a "WaitForUpdates" is out

 private:
  KELib::KEMutex mutex;
  KELib::KEQuietCondition changed;  // broadcast whenever something below changes
  Phase phase KECPP_GUARDED_BY(mutex) = Phase::idle;
  bool refusing KECPP_GUARDED_BY(mutex) = false;
  unsigned int callersInside KECPP_GUARDED_BY(mutex) = 0;
  unsigned long long stops KECPP_GUARDED_BY(mutex) = 0;
  KESyncStatus status KECPP_GUARDED_BY(mutex);
};

}  // namespace KE::Service

#endif
