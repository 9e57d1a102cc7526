// SPDX-License-Identifier: MIT
//
// Who does what, since when, and which locks each holds or waits for: what the watchdog looks at.
//
// Thread safety: any thread.
#ifndef KECPP_TESTS_STRESS_BOARD_H
#define KECPP_TESTS_STRESS_BOARD_H

#include <kecpp.h>
#include <sys/types.h>

#include <chrono>
#include <mutex>
#include <string>
#include <vector>

namespace stress {

class Seat;

// What a seat shows. The texts are literals.
struct Posture {
  std::string actor;
  pid_t thread = 0;
  const char* step = "begins";
  std::chrono::steady_clock::time_point since = std::chrono::steady_clock::now();
  bool resting = false;  // may last for ever
  const char* waitsFor = nullptr;
  std::vector<const char*> holds;
};

class Board {
 public:
  std::vector<Posture> Look() const;

  // Of all steps that ended: the one that took longest, in words.
  std::string LongestStep() const;

 private:
  friend class Seat;
  void NoteEnd(const Posture& ended);

  mutable std::mutex mutex;
  std::vector<Seat*> seats;  // guarded by `mutex`
  Posture longest;           // likewise
  std::chrono::steady_clock::duration longestTime{};
};

// One actor's place on the board while the seat lives; the calling thread's.
class Seat {
 public:
  Seat(Board& board, const std::string& actor);
  ~Seat();
  Seat(const Seat&) = delete;
  Seat& operator=(const Seat&) = delete;

  void Does(const char* step);   // a step begins: progress
  void Rests(const char* step);  // likewise, one that may last for ever
  void WaitsFor(const char* lock);
  void Took(const char* lock);
  void Gave(const char* lock);
  Posture Look() const;

 private:
  Board& board;
  mutable std::mutex mutex;
  Posture posture;  // guarded by `mutex`
};

// Holds a mutex of the library for a scope and shows it.
class ShownGuard {
 public:
  ShownGuard(Seat& seat, const char* name, KELib::KEMutex* mutex);
  ~ShownGuard();
  ShownGuard(const ShownGuard&) = delete;
  ShownGuard& operator=(const ShownGuard&) = delete;

 private:
  Seat& seat;
  const char* const name;
  KELib::KEMutex* const mutex;  // null: nothing is held
};

}  // namespace stress

#endif
