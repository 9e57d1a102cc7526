// SPDX-License-Identifier: MIT
#include "tools/inventory/TaskRun.h"

#include <chrono>
#include <future>

namespace tools::inventory {
namespace {

// Waits on a separate thread, so that the end of the run can end the wait.
bool AwaitTask(KE::Service::KEDataSync& sync, KELib::KEString& response, const EndOfRun& end) {
  std::unique_ptr<KELib::KEWaiter> waiter(KELib::CreateKEWaiter());
  auto success =
      std::async(std::launch::async, [&] { return sync.WaitForTask(response, waiter.get()); });
  while (success.wait_for(std::chrono::milliseconds(200)) != std::future_status::ready) {
    if (end.Ended()) sync.RequestStop();
  }
  return success.get();
}

}  // namespace

bool RunTask(DaemonConnection& connection, const TaskCall& call, const EndOfRun& end) {
  try {
    KELib::KEString response;
    connection.Method().Invoke(KE::Service::targetNamespace, call.method.c_str(), call.type.c_str(),
                               call.value.c_str(), response);
    return AwaitTask(connection.Sync(), response, end);
  } catch (const KELib::Throwable& error) {
    throw ConnectionError("cannot run " + call.method + ": " + error.What());
  }
}

}  // namespace tools::inventory
