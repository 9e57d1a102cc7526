// SPDX-License-Identifier: MIT
//
// A thread that changes the inventory at random, so many times a second: power states, names,
// annotations, hosts' states, moves between hosts, machines that come and go.
#ifndef KECPP_SIMULATOR_CHURN_H
#define KECPP_SIMULATOR_CHURN_H

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <random>
#include <string>
#include <thread>

#include "simulator/Inventory.h"

namespace sim {

class Churn {
 public:
  Churn(Inventory& inventory, double rate, std::uint64_t seed);
  ~Churn();

  // Changes per second; 0 rests. When it returns with 0 no change is under way.
  void SetRate(double rate);

 private:
  void Run();
  void ChangeOne();
  void ChangeMachine(const std::string& machine, unsigned int dice);
  std::string Any(const char* folder) { return inventory.Pick(folder, random()); }

  Inventory& inventory;
  std::mt19937_64 random;  // of the thread alone
  std::mutex mutex;        // guards what follows, except the thread
  std::condition_variable woken;
  double rate;
  bool stop = false;
  std::thread thread;
};

}  // namespace sim

#endif
