// SPDX-License-Identifier: MIT
//
// The daemon's part: it changes its inventory, slower and faster, and loses or spoils the answers
// of waits, until it is told to be calm.
//
// Thread safety: any thread.
#ifndef KECPP_TESTS_STRESS_DAEMON_H
#define KECPP_TESTS_STRESS_DAEMON_H

#include <atomic>
#include <mutex>
#include <thread>

#include "endtoend/Simulator.h"
#include "stress/Board.h"
#include "stress/Tally.h"

namespace stress {

class Daemon {
 public:
  Daemon(Board& board, Tally& tally);
  ~Daemon();
  Daemon(const Daemon&) = delete;
  Daemon& operator=(const Daemon&) = delete;

  const endtoend::Simulator& Simulated() const { return simulator; }
  void LoseSessions() { simulator.Control("session-lost"); }

  // While calm nothing changes and nothing goes wrong.
  void Calm();
  void Rave();
  endtoend::Json Truth() { return simulator.Truth(); }

 private:
  void Run();
  void Act(Seat& seat, unsigned turn);

  Board& board;
  Tally& tally;
  endtoend::Simulator simulator;
  std::mutex mutex;  // held while it acts
  bool calm = true;  // guarded by `mutex`
  std::atomic<bool> stop{false};
  std::thread thread;
};

}  // namespace stress

#endif
