// SPDX-License-Identifier: MIT
//
// Ends the process when an actor is stuck, after it has said on standard error which one, what
// every actor does and for how long, who holds what and waits for whom, and where every thread
// stands.
#ifndef KECPP_TESTS_STRESS_WATCHDOG_H
#define KECPP_TESTS_STRESS_WATCHDOG_H

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "stress/Board.h"

namespace stress {

class Watchdog {
 public:
  // Aborts once an actor that does not rest has been at one step for longer than `limit`.
  Watchdog(const Board& board, std::chrono::milliseconds limit);
  ~Watchdog();
  Watchdog(const Watchdog&) = delete;
  Watchdog& operator=(const Watchdog&) = delete;

 private:
  void Run();
  void Check() const;

  const Board& board;
  const std::chrono::milliseconds limit;
  std::mutex mutex;
  std::condition_variable woken;
  bool stop = false;  // guarded by `mutex`
  std::thread thread;
};

}  // namespace stress

#endif
