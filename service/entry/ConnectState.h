// SPDX-License-Identifier: MIT
//
// What is being connected at this moment, and why the last attempt failed. One a process, as the
// manager is; never destroyed, since a thread may connect while the process ends.
//
// Thread safety: every operation from any thread. Under its mutex only an interrupter's is taken.
#ifndef KECPP_SERVICE_ENTRY_CONNECTSTATE_H
#define KECPP_SERVICE_ENTRY_CONNECTSTATE_H

#include <thread>

#include "foundation/KEMutex.h"
#include "foundation/KEThreadAnnotations.h"
#include "http/CallLimits.h"
#include "http/Interrupter.h"
#include "service/entry/ConnectReason.h"

namespace KE::Service {

class ConnectState {
 public:
  // The calling thread's attempt to connect: Interrupt ends the calls that it makes while this
  // lives on its stack.
  class Attempt {
   public:
    Attempt();
    ~Attempt();
    Attempt(const Attempt&) = delete;
    Attempt& operator=(const Attempt&) = delete;

   private:
    friend class ConnectState;
    KELib::Http::Interrupter interrupter;
    KELib::Http::CallLimits limits;
    const std::thread::id thread;
    Attempt* next = nullptr;
  };

  static ConnectState& Get();

  // There is no failure any more, and no memory is kept for its text.
  void Clear() noexcept;

  // Takes a failure down, with what the calling thread's trace knows of it.
  void Note(ConnectStep step, const char* what) noexcept;
  void Note(KEConnectFailureKind kind, const char* reason) noexcept;

  // Puts before the last failure's reason that the configuration is malformed, unless nothing
  // failed or the attempt was interrupted.
  void Blame(const char* malformation) noexcept;

  void GetFailure(KEConnectFailure& failure);
  bool HasFailed();

  // Cuts the transfers of all attempts that are under way.
  void Interrupt();

 private:
  bool IsInterruptedNoLock() const KECPP_REQUIRES(mutex);
  void WriteTextNoLock() KECPP_REQUIRES(mutex);

  KELib::KEMutex mutex;
  KEConnectFailure last KECPP_GUARDED_BY(mutex);
  KELib::KEString lastUrl KECPP_GUARDED_BY(mutex);  // as shown
  KELib::KEString lastReason KECPP_GUARDED_BY(mutex);
  Attempt* attempts KECPP_GUARDED_BY(mutex) = nullptr;
};

}  // namespace KE::Service

#endif
