// SPDX-License-Identifier: MIT
#include "simulator/Tasks.h"

namespace sim {

Tasks::Tasks(Inventory& objects) : inventory(objects), thread([this] { Run(); }) {}

Tasks::~Tasks() {
  {
    const std::lock_guard<std::mutex> lock(mutex);
    stop = true;
  }
  woken.notify_all();
  thread.join();
}

std::string Tasks::Start(const std::string& outcome, std::chrono::milliseconds pause) {
  std::string id = inventory.CreateTask();
  const Clock::time_point now = Clock::now();
  const std::lock_guard<std::mutex> lock(mutex);
  steps.insert({now + pause, {id, "running"}});
  steps.insert({now + 2 * pause, {id, outcome}});
  woken.notify_all();
  return id;
}

void Tasks::Run() {
  std::unique_lock<std::mutex> lock(mutex);
  while (!stop) {
    if (steps.empty()) {
      woken.wait(lock);
    } else if (steps.begin()->first > Clock::now()) {
      const Clock::time_point next = steps.begin()->first;  // the entry may go while this sleeps
      woken.wait_until(lock, next);
    } else {
      Take(steps.begin()->second);
      steps.erase(steps.begin());
    }
  }
}

void Tasks::Take(const Step& step) {
  if (step.state == "leave") {
    inventory.RemoveTask(step.task);
  } else if (step.state != "hang") {
    inventory.Set(step.task, "info.state", step.state);
  }
}

}  // namespace sim
