// SPDX-License-Identifier: MIT
//
// The users of one service instance, each a thread that does its step again and again until the
// scene is parked.
#ifndef KECPP_TESTS_STRESS_ACTORS_H
#define KECPP_TESTS_STRESS_ACTORS_H

#include <list>
#include <thread>

#include "stress/Board.h"
#include "stress/Scene.h"

namespace stress {

class Actors {
 public:
  // Readers, watchers who come and go, task waiters, one that waits for changes and one that
  // restarts the pending wait.
  Actors(Board& board, Scene& scene);
  ~Actors();  // parks them

  void Park();

 private:
  using Step = void (*)(Scene&, Seat&);
  void Add(const char* name, Step step);

  Board& board;
  Scene& scene;
  std::list<std::thread> threads;
};

// Two threads inside calls that only a stop ends: a task that never does and a change that never
// comes. On return both are inside.
class BlockedCallers {
 public:
  BlockedCallers(Board& board, Scene& scene);
  ~BlockedCallers();  // waits for them: the instance has been stopped

 private:
  void AwaitInside(Board& board) const;

  std::list<std::thread> threads;
};

}  // namespace stress

#endif
