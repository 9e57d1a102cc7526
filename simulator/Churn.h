// SPDX-License-Identifier: MIT
//
// A thread that changes the inventory at random, so many times a second.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <random>
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

  Inventory& inventory;
  std::mt19937_64 random;
  std::mutex mutex;
  std::condition_variable woken;
  double rate;
  bool stop = false;
  std::thread thread;
};

}  // namespace sim
