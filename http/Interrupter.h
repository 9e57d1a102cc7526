// SPDX-License-Identifier: MIT
//
// Ends transfers that wait for a silent server, from another thread. A transfer registers with the
// interrupter of its CallLimits scope for the time that it runs.
//
// Thread safety: every operation from any thread. Under its mutex only that of a handle's sockets
//   is taken.
#ifndef KECPP_HTTP_INTERRUPTER_H
#define KECPP_HTTP_INTERRUPTER_H

#include "foundation/KEMutex.h"
#include "foundation/KEThreadAnnotations.h"

namespace KELib {
namespace Http {

class SocketRegistry;

class Interrupter {
 public:
  // A transfer that runs. It lives on the stack.
  class Registration {
   public:
    // `interrupter` may be null: then nothing ends the transfer early. `sockets` are those of the
    // transfer's handle.
    Registration(Interrupter* interrupter, SocketRegistry& sockets);
    ~Registration();
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;

   private:
    friend class Interrupter;
    Interrupter* const owner;
    SocketRegistry& sockets;
    Registration* next = nullptr;
  };

  Interrupter() = default;
  Interrupter(const Interrupter&) = delete;
  Interrupter& operator=(const Interrupter&) = delete;

  // Ends the registered transfers within milliseconds, and those that register before Resume(). The
  // look-up of a host name is not cut short.
  void Interrupt();
  void Resume();

  // Whether Interrupt() was called and Resume() not since.
  bool IsInterrupting() const;

 private:
  mutable KEMutex mutex;
  bool interrupting KECPP_GUARDED_BY(mutex) = false;
  Registration* registrations KECPP_GUARDED_BY(mutex) = nullptr;
};

}  // namespace Http
}  // namespace KELib

#endif
