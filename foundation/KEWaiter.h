// SPDX-License-Identifier: MIT
//
// A caller hands it to the data synchronisation, which signals it when something is done. An agent
// may bring its own implementation; the library calls only Signal().
//
// Ownership: the caller's; it lives until it was signalled or until the operation that it was
//   handed to says that it is let go.
#ifndef KECPP_FOUNDATION_KEWAITER_H
#define KECPP_FOUNDATION_KEWAITER_H

#include "foundation/KEExport.h"

namespace KELib {

class KECPP_API KEWaiter {
 public:
  virtual ~KEWaiter();

  // Waits until Signal() was called: true at once when it was called before. A positive
  // `milliseconds` limits the wait, which then returns false; zero or less waits without limit.
  // Any thread.
  virtual bool Wait(int milliseconds) = 0;

  // Lets every present and later Wait() return true. Any thread. Called with locks held: it returns
  // promptly and does not call back into the library.
  virtual void Signal() = 0;
};

// A waiter ready for use, owned by the caller. It may be deleted as soon as a Wait() of the only
// waiting thread has returned true. It writes nothing to the log.
KECPP_API KEWaiter* CreateKEWaiter();

}  // namespace KELib

#endif
