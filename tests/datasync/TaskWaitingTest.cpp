// SPDX-License-Identifier: MIT
#include "datasync/SyncFixture.h"

namespace KE::Service {
namespace {

using KELib::SystemException;

class TaskWaitingTest : public SyncFixture {
 protected:
  CountingWaiter waiter;
};

TEST_F(TaskWaitingTest, WithoutAWaiterNothingIsSent) {
  EXPECT_FALSE(WaitForTask("task-1", nullptr));
  EXPECT_TRUE(CapturedLog::Contains("No waiter provided to wait for task."));
  EXPECT_EQ(server.Count("CreateFilter"), 0u);
}

TEST_F(TaskWaitingTest, ATaskMayEndWithinTheFirstCycle) {
  server.Feed(UpdateSet("1", "filter-1", Task("task-1", "success")));
  EXPECT_TRUE(WaitForTask("task-1", &waiter));
  const std::string body = server.Calls("CreateFilter")[0].argument;
  for (const char* part : {"<type>Task</type>\n<all>false</all>\n<pathSet>info.state</pathSet>",
                           "<obj type=\"Task\">task-1</obj>"}) {
    EXPECT_NE(body.find(part), std::string::npos) << part;
  }
}

TEST_F(TaskWaitingTest, EveryWayInWhichAWaitEnds) {
  const std::string obj = "<obj type=\"Task\">task-1</obj>";
  const struct {
    std::string objects;
    bool succeeded;
  } rows[] = {
      {Task("task-1", "success"), true},
      {Task("task-1", "error"), false},
      {"<objectSet><kind>leave</kind>" + obj + "</objectSet>", false},
      {"<missingSet>" + obj + "</missingSet>", false},
  };
  WatchMachines();
  std::size_t filters = 1;
  for (const auto& row : rows) {
    SCOPED_TRACE(row.objects);
    const std::string filter = "filter-" + std::to_string(++filters);
    waiter.signals = 0;
    std::thread feeder([&] {
      server.AwaitCalls("CreateFilter", filters);
      server.Feed(UpdateSet("2", filter, Task("task-1", "running")));
      server.Feed(UpdateSet("3", filter, row.objects));
    });
    EXPECT_EQ(WaitForTask("task-1", &waiter), row.succeeded);
    feeder.join();
    EXPECT_EQ(waiter.signals, 1);
    EXPECT_EQ(server.Calls("DestroyPropertyFilter").back().value, filter);
    EXPECT_EQ(Caches(), "machine vm-1 ElementName=[first]\n");
  }
}

TEST_F(TaskWaitingTest, FailuresLetGoButTimeoutsAndCancelsDoNot) {
  WatchMachines();
  std::thread feeder([&] {
    server.AwaitCalls("CreateFilter", 2);
    for (int i = 0; i < 3; ++i) server.FeedError(KELib::RequestTimedOutException("slow"));
    for (int i = 0; i < 2; ++i) server.FeedError(KE::RequestCanceledException("x"));
    for (int i = 0; i < 2; ++i) server.FeedError(SystemException("down"));
    server.AwaitQuietWait(9);
    EXPECT_EQ(waiter.signals, 0);
    server.Feed("");
  });
  EXPECT_FALSE(WaitForTask("task-1", &waiter));
  feeder.join();
  EXPECT_EQ(waiter.signals, 1);
}

// The server is asked for everything again and tells of the task once more.
TEST_F(TaskWaitingTest, ASetThatIsCutShortLetsNobodyGo) {
  WatchMachines();
  std::thread feeder([&] {
    server.AwaitCalls("CreateFilter", 2);
    server.Feed(UpdateSet("2", "filter-2", "<objectSet>the set is cut short"));
    server.AwaitQuietWait(3);
    server.Feed(UpdateSet("3", "filter-2", Task("task-1", "success")));
  });
  EXPECT_TRUE(WaitForTask("task-1", &waiter));
  feeder.join();
}

TEST_F(TaskWaitingTest, AServerThatNeverAnswersDoesNotHoldTheFirstWatch) {
  server.Always("WaitForUpdates", FakeServer::Throw(SystemException("down")));
  EXPECT_FALSE(WaitForTask("task-1", &waiter));
  EXPECT_EQ(waiter.signals, 1);
}

// A second report of the end that comes while the filter is being destroyed files the task again.
TEST_F(TaskWaitingTest, ALateReportLeavesNoStubBehind) {
  WatchMachines();
  std::thread feeder([&] {
    server.AwaitCalls("CreateFilter", 2);
    for (const char* version : {"2", "3", "4"}) {
      server.Feed(UpdateSet(version, "filter-2", Task("task-1", "success")));
    }
  });
  EXPECT_TRUE(WaitForTask("task-1", &waiter));
  feeder.join();
  server.AwaitQuietWait();
  EXPECT_EQ(Caches(), "machine vm-1 ElementName=[first]\n");
}

TEST_F(TaskWaitingTest, SeveralThreadsWaitForTheirOwnTasks) {
  constexpr int kTasks = 4;
  WatchMachines();
  std::vector<std::thread> callers;
  CountingWaiter waiters[kTasks];
  for (int i = 0; i < kTasks; ++i) {
    callers.emplace_back(
        [&, i] { EXPECT_EQ(WaitForTask(std::to_string(i), &waiters[i]), i % 2 == 0); });
    server.AwaitCalls("CreateFilter", 2 + static_cast<std::size_t>(i));
  }
  for (int i = kTasks - 1; i >= 0; --i) {
    server.Feed(UpdateSet("2", "filter-" + std::to_string(i + 2),
                          Task(std::to_string(i), i % 2 == 0 ? "success" : "error")));
  }
  for (std::thread& caller : callers) caller.join();
  EXPECT_EQ(Caches(), "machine vm-1 ElementName=[first]\n");
}

}  // namespace
}  // namespace KE::Service
