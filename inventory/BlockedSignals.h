// SPDX-License-Identifier: MIT
//
// Blocks all signals of the thread while it exists: a thread that is started then inherits that,
// and the program's signals stay its own threads' business.
#ifndef KECPP_INVENTORY_BLOCKEDSIGNALS_H
#define KECPP_INVENTORY_BLOCKEDSIGNALS_H

#include <pthread.h>

#include <csignal>

namespace kecpp {

class BlockedSignals {
 public:
  BlockedSignals() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
  }
  ~BlockedSignals() { pthread_sigmask(SIG_SETMASK, &before, nullptr); }
  BlockedSignals(const BlockedSignals&) = delete;
  BlockedSignals& operator=(const BlockedSignals&) = delete;

 private:
  sigset_t before;
};

}  // namespace kecpp

#endif
