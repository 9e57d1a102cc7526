// SPDX-License-Identifier: MIT
#include "SharedInventory.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <thread>
#include <vector>

namespace kecpp::python {
namespace {

constexpr std::chrono::seconds kEndLimit(5);

// Those that live. Never destroyed: the process may end on any thread.
struct Register {
  std::mutex mutex;
  std::vector<std::weak_ptr<SharedInventory>> all;
};

Register& TheRegister() {
  static Register& made = *new Register;
  return made;
}

}  // namespace

std::shared_ptr<SharedInventory> SharedInventory::Make(const Options& options) {
  auto made = std::make_shared<SharedInventory>(options);
  Register& living = TheRegister();
  const std::lock_guard<std::mutex> lock(living.mutex);
  const auto isGone = [](const auto& one) { return one.expired(); };
  living.all.erase(std::remove_if(living.all.begin(), living.all.end(), isGone), living.all.end());
  living.all.push_back(made);
  return made;
}

SharedInventory::SharedInventory(const Options& options) : owner(getpid()), inventory(options) {}

bool SharedInventory::IsForked() const {
  return getpid() != owner;
}

Inventory& SharedInventory::Get() {
  if (IsForked()) throw Error("", "an inventory cannot be used in a child after fork");
  return inventory;
}

void SharedInventory::End() {
  if (IsForked()) return;
  inventory.Close();
  std::unique_lock<std::mutex> lock(mutex);
  idle.wait_for(lock, kEndLimit, [this] { return calls == 0; });
}

void SharedInventory::EndAll() {
  std::vector<std::shared_ptr<SharedInventory>> living;
  {
    const std::lock_guard<std::mutex> lock(TheRegister().mutex);
    for (const auto& one : TheRegister().all) {
      if (auto alive = one.lock()) living.push_back(std::move(alive));
    }
  }
  std::vector<std::thread> enders;
  enders.reserve(living.size());
  for (const auto& one : living) enders.emplace_back([&one] { one->End(); });
  for (std::thread& ender : enders) ender.join();
}

SharedInventory::Call::Call(SharedInventory& called) : shared(called) {
  const std::lock_guard<std::mutex> lock(shared.mutex);
  ++shared.calls;
}

SharedInventory::Call::~Call() {
  const std::lock_guard<std::mutex> lock(shared.mutex);
  if (--shared.calls == 0) shared.idle.notify_all();
}

}  // namespace kecpp::python
