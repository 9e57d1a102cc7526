// SPDX-License-Identifier: MIT
#include "tools/inventory/TaskRun.h"

#include <chrono>
#include <future>

#include "tools/inventory/InventoryRun.h"

namespace tools::inventory {

// Waits on a separate thread, so that the end of the run can end the wait.
bool RunTask(const Options& options, const EndOfRun& end) {
  kecpp::Inventory inventory(InventoryOptions(options));
  AwaitFirstData(inventory, end);
  const TaskCall& call = *options.task;
  auto success = std::async(std::launch::async, [&] {
    return inventory.RunTask(call.method, {call.type, call.value});
  });
  while (success.wait_for(std::chrono::milliseconds(200)) != std::future_status::ready) {
    if (end.Ended()) inventory.Close();
  }
  return success.get();
}

}  // namespace tools::inventory
