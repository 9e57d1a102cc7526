// SPDX-License-Identifier: MIT
//
// Stopping a data sync from other threads: who is let go, what is refused, and what ends at once.
#include <functional>
#include <vector>

#include "datasync/SyncFixture.h"

namespace KE::Service {
namespace {

using KELib::SystemException;

class SyncStopTest : public SyncFixture {};

// A caller in the first cycle, one that waits for it, and ones that wait for a task and a change.
TEST_F(SyncStopTest, CleanupLetsBlockedCallersGo) {
  CountingWaiter waiters[2];
  std::vector<std::thread> callers;
  callers.emplace_back([&] { Watch(kMachines, &waiters[0]); });
  server.AwaitCalls("WaitForUpdates", 1);
  callers.emplace_back([&] { Watch("_p_ _o_ HostSystem name"); });
  callers.emplace_back([&] { EXPECT_FALSE(WaitForTask("task-1", &waiters[1])); });
  callers.emplace_back([&] {
    unsigned long long seen = 0;
    TextOf([&] { EXPECT_FALSE(sync->WaitForChange(seen, 0)); });  // or it came too late to get in
  });
  server.AwaitCalls("CreateFilter", 3);
  sync->Cleanup();
  for (std::thread& caller : callers) caller.join();
  EXPECT_EQ(waiters[0].signals, 1);
  EXPECT_EQ(waiters[1].signals, 1);
}

TEST_F(SyncStopTest, NobodyComesInWhileItEnds) {
  WatchMachines();
  server.Then("CancelWaitForUpdates", [&] {
    unsigned long long seen = 0;
    CountingWaiter waiter;
    for (const std::function<void()>& entry : std::vector<std::function<void()>>{
             [&] { Watch(kMachines); }, [&] { WaitForTask("task-1", &waiter); },
             [&] { sync->WaitForChange(seen, 0); }, [&] { sync->StopDataSync(collector.get()); }}) {
      EXPECT_EQ(TextOf(entry), "The data sync is being stopped.");
    }
    return "";
  });
  sync->Cleanup();
  EXPECT_EQ(server.Count("CreateFilter"), 1u);
}

// A cancel that overtakes its wait, or that cannot be sent, ends nothing: it is sent again. Its
// failure is told once.
TEST_F(SyncStopTest, ACancelThatWasLostIsSentAgain) {
  WatchMachines();
  for (int i = 0; i < 2; ++i) {
    server.Then("CancelWaitForUpdates", FakeServer::Throw(SystemException("no free handle")));
  }
  sync->Cleanup();
  EXPECT_EQ(server.Count("CancelWaitForUpdates"), 3u);
  EXPECT_EQ(CapturedLog::Count("Exception Cancelling data sync : no free handle"), 1u);

  server.Feed(UpdateSet("2", "filter-2"));
  Watch(kMachines);
  AwaitQuietWait(4);
  server.Then("CancelWaitForUpdates", FakeServer::Throw(SystemException("no free handle")));
  sync->RequestStop();
  server.Then("CreateFilter", [&] {  // sent when the loop has left
    EXPECT_EQ(server.Count("CancelWaitForUpdates"), 5u);
    server.Feed(UpdateSet("3", "filter-3"));
    return "<returnval type=\"PropertyFilter\">filter-3</returnval>";
  });
  Watch(kMachines);
}

// A pause after a failure, and the ten seconds between two looks at the process-id file, end at
// once: nothing needs to be cancelled.
TEST_F(SyncStopTest, AStopEndsThePausesOfTheLoop) {
  const PidFile file;
  WatchMachines();
  server.FeedError(SystemException("down"));
  while (Status().consecutiveFailures == 0) std::this_thread::yield();
  const auto begin = std::chrono::steady_clock::now();
  sync.reset();
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
  EXPECT_EQ(server.Count("CancelWaitForUpdates"), 0u);
}

TEST_F(SyncStopTest, WaitForChangeTellsChangesAndTimeouts) {
  WatchMachines();
  unsigned long long seen = 0;
  EXPECT_TRUE(sync->WaitForChange(seen, 0));
  EXPECT_EQ(seen, 1u);
  EXPECT_FALSE(sync->WaitForChange(seen, 1));
  EXPECT_EQ(seen, 1u);
  server.Feed(UpdateSet("2", "filter-1"));
  server.Feed(UpdateSet("3", "filter-1"));
  AwaitQuietWait(4);
  EXPECT_TRUE(sync->WaitForChange(seen, 0));
  EXPECT_EQ(seen, 3u);
  sync->RequestStop();
  EXPECT_FALSE(sync->WaitForChange(seen = 0, 0));
  EXPECT_EQ(seen, 0u);
}

TEST_F(SyncStopTest, AMethodsAnswerThatComesAfterTheStopIsDropped) {
  Stub::ManagedObjectReference* reference =
      Watch("_m_ RetrieveAllPermissions _co_ Zorbel_Identity");
  AwaitQuietWait(1);
  server.Then("RetrieveAllPermissions", [&] {
    sync->StopDataSync(reference);
    return "<returnval><principal>late</principal></returnval>";
  });
  server.FeedError(KELib::RequestTimedOutException("x"));
  AwaitLoopEnd();
  EXPECT_EQ(Caches(), "");
}

}  // namespace
}  // namespace KE::Service
