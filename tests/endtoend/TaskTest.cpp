// SPDX-License-Identifier: MIT
//
// Tasks on the server: the object's key tells the simulated daemon how they end.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>

#include "endtoend/LibraryAgent.h"
#include "endtoend/Simulator.h"
#include "endtoend/Tool.h"

namespace endtoend {
namespace {

// The pool has two handles and the sync thread's wait keeps one.
void StartTask(LibraryAgent& agent, const char* outcome, KELib::KEString& response) {
  const bool started = Eventually([&] {
    try {
      agent.Connection().Method().Invoke(KE::Service::targetNamespace, "StartTask",
                                         "VirtualMachine", outcome, response);
      return true;
    } catch (const KELib::Exception& error) {
      EXPECT_THAT(error.What(), testing::HasSubstr("Busy"));
      return false;
    }
  });
  ASSERT_TRUE(started);
}

TEST(Tasks, TheToolsExitStatusIsTheOutcome) {
  Simulator simulator({});
  Tool success(simulator.Config(), {"--run-task", "StartTask:VirtualMachine:success"});
  EXPECT_EQ(success.Wait(), 0) << success.Errors();
  EXPECT_EQ(success.Output(), "StartTask: success\n");
  for (const char* outcome : {"error", "leave"}) {
    Tool tool(simulator.Config(),
              {"--run-task", std::string("StartTask:VirtualMachine:") + outcome});
    EXPECT_EQ(tool.Wait(), 1) << outcome << tool.Errors();
    EXPECT_EQ(tool.Output(), "StartTask: no success\n");
  }
  Tool forever(simulator.Config(),
               {"--run-task", "StartTask:VirtualMachine:hang", "--duration", "0.5"});
  EXPECT_EQ(forever.Wait(), 1) << forever.Errors();
  EXPECT_EQ(simulator.Stats()["sessions"], 0);
}

TEST(Tasks, SeveralThreadsWaitForDifferentTasks) {
  Simulator simulator({});
  LibraryAgent agent(simulator.Config());
  const char* const outcomes[] = {"success", "error", "success", "leave", "success", "error"};
  std::vector<std::future<bool>> results;
  for (const char* outcome : outcomes) {
    results.push_back(std::async(std::launch::async, [&agent, outcome] {
      KELib::KEString response;
      StartTask(agent, outcome, response);
      std::unique_ptr<KELib::KEWaiter> waiter(KELib::CreateKEWaiter());
      return agent.Sync().WaitForTask(response, waiter.get());
    }));
  }
  for (std::size_t i = 0; i < results.size(); ++i) {
    EXPECT_EQ(results[i].get(), std::string(outcomes[i]) == "success") << i;
  }
  KELib::KEString name(KE::Stub::TaskInfoClass);
  auto* tasks = agent.Connection().Cache().GetDataCache(name);
  KELib::KEMutexGuard guard(tasks->GetMutex());
  EXPECT_EQ(tasks->Size(), 0u);
}

}  // namespace
}  // namespace endtoend
