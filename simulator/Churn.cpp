// SPDX-License-Identifier: MIT
#include "simulator/Churn.h"

#include <chrono>
#include <string>
#include <vector>

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

// Changes are made under the mutex: whoever has set the rate to 0 sees a quiet inventory.
void Churn::Run() {
  std::unique_lock<std::mutex> lock(mutex);
  while (!stop) {
    if (rate <= 0) {
      woken.wait(lock);
      continue;
    }
    woken.wait_for(lock, std::chrono::duration<double>(1.0 / rate));
    if (!stop && rate > 0) ChangeOne();
  }
}

void Churn::ChangeOne() {
  const std::vector<std::string> machines = inventory.Ids("VirtualMachine");
  const std::vector<std::string> hosts = inventory.Ids("HostSystem");
  if (hosts.empty()) return;
  const auto any = [this](const std::vector<std::string>& list) {
    return list[random() % list.size()];
  };
  const std::string mark = std::to_string(random() % 100000);
  const unsigned int dice = static_cast<unsigned int>(random() % 20);
  if (machines.empty() || dice == 0) {
    inventory.CreateMachine("new" + mark, any(hosts));
  } else if (dice == 1 && machines.size() > 3) {
    inventory.RemoveMachine(any(machines));
  } else if (dice < 5) {
    inventory.MoveMachine(any(machines), any(hosts));
  } else if (dice < 8) {
    inventory.Set(any(machines), "name", "renamed" + mark + " &amp; co");
  } else if (dice < 9) {
    static const char* const kStatuses[] = {"green", "yellow", "red", "gray"};
    inventory.Set(any(hosts), "summary.overallStatus", kStatuses[random() % 4]);
  } else if (dice < 11) {
    inventory.Set(any(machines), "config.annotation", dice == 9 ? "" : "note " + mark);
  } else {
    static const char* const kStates[] = {"poweredOn", "poweredOff", "suspended"};
    inventory.Set(any(machines), "runtime.powerState", kStates[random() % 3]);
  }
}

}  // namespace sim
