// SPDX-License-Identifier: MIT
//
// Server tasks: each is queued, then runs, then ends as ordered.
//
// Thread safety: any thread. One thread takes all tasks from state to state.
#ifndef KECPP_SIMULATOR_TASKS_H
#define KECPP_SIMULATOR_TASKS_H

#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <string>
#include <thread>

#include "simulator/Inventory.h"

namespace sim {

class Tasks {
 public:
  explicit Tasks(Inventory& inventory);
  ~Tasks();

  // Starts a task that changes its state every `pause`: it is queued, runs, and its last state is
  // `outcome`, or it runs for ever ("hang"), or disappears ("leave"). Returns its identifier.
  std::string Start(const std::string& outcome, std::chrono::milliseconds pause);

 private:
  struct Step {
    std::string task, state;  // or "hang", "leave": what happens then
  };
  using Clock = std::chrono::steady_clock;

  void Run();
  void Take(const Step& step);

  Inventory& inventory;
  std::mutex mutex;  // guards what follows, except the thread
  std::condition_variable woken;
  std::multimap<Clock::time_point, Step> steps;  // still to be taken
  bool stop = false;
  std::thread thread;
};

}  // namespace sim

#endif
