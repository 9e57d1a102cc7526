// SPDX-License-Identifier: MIT
//
// Who does what, since when, and which locks each holds or waits for: what the watchdog looks at.
//
// Thread safety: any thread.
#ifndef KECPP_TESTS_STRESS_BOARD_H
#define KECPP_TESTS_STRESS_BOARD_H

#include <kecpp.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <future>
#include <list>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace stress {

using Clock = std::chrono::steady_clock;

inline void Nap(int milliseconds) {
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

// What a seat shows. The texts are literals.
struct Posture {
  std::string actor;
  pid_t thread = gettid();
  const char* step = "begins";
  Clock::time_point since = Clock::now();
  bool resting = false;  // may last for ever
  const char* waitsFor = nullptr;
  std::vector<const char*> holds;

  double Seconds() const { return std::chrono::duration<double>(Clock::now() - since).count(); }
};

class Board {
 public:
  std::vector<Posture> Look() const {
    const std::lock_guard<std::mutex> lock(mutex);
    return {postures.begin(), postures.end()};
  }

  // Of all steps that ended: the one that took longest, in words.
  std::string LongestStep() const {
    const std::lock_guard<std::mutex> lock(mutex);
    return longest;
  }

 private:
  friend class Seat;
  void NoteEnd(const Posture& ended) {  // with the mutex held
    if (ended.resting || ended.Seconds() <= longestSeconds) return;
    longestSeconds = ended.Seconds();
    longest = std::to_string(longestSeconds) + " s: '" + ended.actor + "' " + ended.step;
  }

  mutable std::mutex mutex;  // guards what follows
  std::list<Posture> postures;
  std::string longest;
  double longestSeconds = 0;
};

// One actor's place on the board while the seat lives; the calling thread's.
class Seat {
 public:
  Seat(Board& where, const std::string& actor) : board(where) {
    const std::lock_guard<std::mutex> lock(board.mutex);
    posture = board.postures.emplace(board.postures.end());
    posture->actor = actor;
  }
  ~Seat() {
    const std::lock_guard<std::mutex> lock(board.mutex);
    board.NoteEnd(*posture);
    board.postures.erase(posture);
  }
  Seat(const Seat&) = delete;
  Seat& operator=(const Seat&) = delete;

  void Does(const char* step, bool resting = false) {  // a step begins: progress
    const std::lock_guard<std::mutex> lock(board.mutex);
    board.NoteEnd(*posture);
    posture->step = step;
    posture->since = Clock::now();
    posture->resting = resting;
  }
  void Rests(const char* step) { Does(step, true); }  // likewise, one that may last for ever
  const char* Step() const { return posture->step; }  // for the seat's own thread

  template <typename Edit>
  void Change(Edit edit) {
    const std::lock_guard<std::mutex> lock(board.mutex);
    edit(*posture);
  }

 private:
  Board& board;
  std::list<Posture>::iterator posture;  // guarded by the board's mutex
};

// Holds a mutex of the library for a scope and shows it; guards nest. Null: nothing is held.
class ShownGuard {
 public:
  ShownGuard(Seat& actor, const char* lockName, KELib::KEMutex* lock)
      : seat(actor), name(lockName), mutex(lock) {
    if (!mutex) return;
    seat.Change([this](Posture& posture) { posture.waitsFor = name; });
    mutex->Lock();
    seat.Change([this](Posture& posture) {
      posture.waitsFor = nullptr;
      posture.holds.push_back(name);
    });
  }
  ~ShownGuard() {
    if (!mutex) return;
    mutex->Unlock();
    seat.Change([](Posture& posture) { posture.holds.pop_back(); });
  }
  ShownGuard(const ShownGuard&) = delete;
  ShownGuard& operator=(const ShownGuard&) = delete;

 private:
  Seat& seat;
  const char* const name;
  KELib::KEMutex* const mutex;
};

// A thread on a seat of its own that does its step again and again, until the step returns false or
// the player is destroyed, which waits for the end of the step.
class Player {
 public:
  template <typename Step>
  Player(Board& board, const std::string& name, Step step)
      : thread([this, &board, name, step] {
          Seat seat(board, name);
          while (!stop && step(seat)) continue;
        }) {}
  ~Player() {
    stop = true;
    thread.join();
  }
  Player(const Player&) = delete;
  Player& operator=(const Player&) = delete;

 private:
  std::atomic<bool> stop{false};
  std::thread thread;
};

// Ends the process when an actor is stuck, after it has said on standard error which one, what
// every actor does and for how long, who holds what and waits for whom, and where every thread
// stands, the library's own included. Takes the signal SIGUSR2 over.
class Watchdog {
 public:
  // Aborts once an actor that does not rest has been at one step for longer than `limit`.
  Watchdog(const Board& board, std::chrono::milliseconds limit);
  ~Watchdog() {
    stop.set_value();
    thread.join();
  }
  Watchdog(const Watchdog&) = delete;
  Watchdog& operator=(const Watchdog&) = delete;

 private:
  std::promise<void> stop;
  std::thread thread;
};

}  // namespace stress

#endif
