// SPDX-License-Identifier: MIT
#include "simulator/Churn.h"

#include <algorithm>
#include <chrono>

namespace sim {

Churn::Churn(Inventory& objects, double perSecond, std::uint64_t seed)
    : inventory(objects), random(seed), rate(perSecond), thread([this] { Run(); }) {}

Churn::~Churn() {
  {
    const std::lock_guard<std::mutex> lock(mutex);
    stop = true;
  }
  woken.notify_all();
  thread.join();
}

void Churn::SetRate(double perSecond) {
  const std::lock_guard<std::mutex> lock(mutex);
  rate = perSecond;
  woken.notify_all();
}

// Changes are made under the mutex: a caller that has set the rate to 0 sees a quiet inventory.
void Churn::Run() {
  using Clock = std::chrono::steady_clock;
  std::unique_lock<std::mutex> lock(mutex);
  Clock::time_point due = Clock::now();
  while (!stop) {
    if (rate <= 0) {
      woken.wait(lock);
      due = Clock::now();
      continue;
    }
    const std::chrono::duration<double> pause(1.0 / rate);
    const Clock::time_point last = due;
    // The mutex is let go for a moment even when the rate is higher than can be kept.
    due = std::max(last + std::chrono::duration_cast<Clock::duration>(pause),
                   Clock::now() + std::chrono::microseconds(20));
    const bool isDue = woken.wait_until(lock, due) == std::cv_status::timeout;
    if (stop || rate <= 0) continue;  // it may have been set while this thread woke
    if (isDue) {
      ChangeOne();
    } else {
      due = Clock::now();
    }
  }
}

void Churn::ChangeOne() {
  const unsigned int dice = static_cast<unsigned int>(random() % 20);
  const std::string host = Any(Inventory::kHosts), machine = Any(Inventory::kMachines);
  if (host.empty()) return;
  if (machine.empty() || dice == 0) {
    inventory.CreateMachine("new" + std::to_string(random() % 100000), host);
  } else if (dice == 1 && inventory.Count(Inventory::kMachines) > 3) {
    inventory.RemoveMachine(machine);
  } else if (dice < 5) {
    inventory.MoveMachine(machine, host);
  } else if (dice == 5) {
    static const char* const kStatuses[] = {"green", "yellow", "red", "gray"};
    inventory.Set(host, "summary.overallStatus", kStatuses[random() % 4]);
  } else {
    ChangeMachine(machine, dice);
  }
}

void Churn::ChangeMachine(const std::string& machine, unsigned int dice) {
  const std::string mark = std::to_string(random() % 100000);
  if (dice < 9) {
    inventory.Set(machine, "name", "renamed" + mark + " &amp; co");
  } else if (dice < 11) {
    inventory.Set(machine, "config.annotation", dice == 9 ? "" : "note " + mark);
  } else {
    static const char* const kStates[] = {"poweredOn", "poweredOff", "suspended"};
    inventory.Set(machine, "runtime.powerState", kStates[random() % 3]);
  }
}

}  // namespace sim
