// SPDX-License-Identifier: MIT
//
// The loop that waits for updates, where the files of loop/ cannot look: readers beside it, times,
// and the end of the process.
#include "datasync/SyncFixture.h"
#include "foundation/KEMutexGuard.h"
#include "stub/base/KEStubRef.h"
#include "stub/classes/ClassNames.h"
#include "stub/classes/ZORBEL_VMComputerSystem.h"

namespace KE::Service {
namespace {

using KELib::SystemException;

class SyncLoopTest : public SyncFixture {};

TEST_F(SyncLoopTest, TheCachesAreFullWhenSetupReturns) {
  sync->StartSyncData();  // nothing is watched
  EXPECT_EQ(server.Count("WaitForUpdates"), 0u);
  server.Feed(UpdateSet("one", "filter-1", Machine("vm-1", "web")));
  EXPECT_STREQ(Watch(kMachines)->value.Cstr(), "filter-1");
  EXPECT_EQ(Caches(), "machine vm-1 ElementName=[web]\n");
  EXPECT_TRUE(Status().firstFillDone && Status().loopRunning);
  EXPECT_STREQ(Status().version.Cstr(), "one");
  AwaitQuietWait(2);
  const auto waits = server.Calls("WaitForUpdates");
  EXPECT_EQ(waits[0].argument, "");
  EXPECT_EQ(waits[1].argument, "one");
  EXPECT_EQ(waits[1].type + " " + waits[1].value, "PropertyCollector pc-1");

  server.Feed(UpdateSet("two", "filter-1", Machine("vm-1", "mail")));
  AwaitQuietWait(3);
  EXPECT_EQ(Caches(), "machine vm-1 ElementName=[mail]\n");
  EXPECT_EQ(LastVersion(), "two");
  sync->StartSyncData();  // it runs already
  EXPECT_EQ(server.Count("WaitForUpdates"), 3u);
  EXPECT_TRUE(CapturedLog::Lines().empty());
}

// Each pause is a lower limit, so this cannot fail on a slow machine.
TEST_F(SyncLoopTest, RepeatedFailuresAreSpacedOut) {
  WatchMachines();
  for (int i = 0; i < 3; ++i) server.FeedError(SystemException("down"));
  server.Feed(UpdateSet("2", "filter-1"));
  server.FeedError(SystemException("down again"));
  AwaitQuietWait(7);
  const auto calls = server.Calls("WaitForUpdates");
  auto gapBehind = [&](std::size_t i) { return calls[i + 1].time - calls[i].time; };
  EXPECT_GE(gapBehind(2), std::chrono::milliseconds(100));
  EXPECT_GE(gapBehind(3), std::chrono::seconds(1));
  EXPECT_GE(gapBehind(5), std::chrono::milliseconds(10));
}

TEST_F(SyncLoopTest, NothingIsSentWithoutARootOrWithoutAWaiterForATask) {
  PropertyTexts machines(kMachines);
  EXPECT_EQ(TextOf([&] { sync->SetupDataSync(nullptr, machines, nullptr); }),
            "Unable to get data - root object or type name not provided.");
  EXPECT_FALSE(WaitForTask("task-1", nullptr));
  EXPECT_TRUE(CapturedLog::Contains("No waiter provided to wait for task."));
  EXPECT_EQ(server.Count(""), 0u);
}

// A second report of the end that comes while the filter is being destroyed files the task again.
TEST_F(SyncLoopTest, ALateReportOfATaskLeavesNoStubBehind) {
  WatchMachines();
  CountingWaiter waiter;
  std::thread feeder([&] {
    server.AwaitCalls("CreateFilter", 2);
    for (const char* version : {"2", "3", "4"}) {
      server.Feed(UpdateSet(version, "filter-2", Task("task-1", "success")));
    }
  });
  EXPECT_TRUE(WaitForTask("task-1", &waiter));
  feeder.join();
  AwaitQuietWait();
  EXPECT_EQ(Caches(), "machine vm-1 ElementName=[first]\n");
}

// Several fields of one object change in one set: a reader that holds the cache sees all or none.
TEST_F(SyncLoopTest, ReadersSeeWholeObjects) {
  WatchMachines();
  const std::string last = "300";
  for (int i = 1; i <= std::stoi(last); ++i) {
    const std::string n = std::to_string(i);
    const std::string value = "<val>" + n + "</val>";
    const std::string uuid = "</changeSet><changeSet><name>config.uuid</name>" + value;
    server.Feed(UpdateSet(n, "filter-1", Object("VirtualMachine", "vm-1", "name", value + uuid)));
  }
  KELib::KEString type(Stub::ZORBEL_VMComputerSystemClass), key("vm-1");
  KE::Instance::KEDataCache* cache = sync->GetCache()->GetDataCache(type);
  for (std::string seen; seen != last;) {
    KELib::KEMutexGuard guard(cache->GetMutex());
    KELib::Stub::KEStubRef ref;
    cache->GetVal(key, ref);
    auto& machine = dynamic_cast<Stub::ZORBEL_VMComputerSystem&>(*ref.GetData());
    seen = machine.ElementName.Cstr();
    ASSERT_TRUE(seen == "first" || seen == machine.UUID.Cstr()) << seen;
  }
}

// --- the end of the process ----------------------------------------------------------------------

KEDataSyncImpl* doomed = nullptr;

// What an agent may do at exit: free the library. It must not wait for the thread that exits.
void FreeAtExit() {
  delete doomed;
  for (const auto& line : CapturedLog::Lines()) std::fprintf(stderr, "%s\n", line.text.c_str());
}

class SyncLoopDeathTest : public SyncFixture {
 protected:
  SyncLoopDeathTest() { testing::FLAGS_gtest_death_test_style = "threadsafe"; }

  // Runs in the child: meets `fate` in the first cycle, on its caller's thread, or in the next.
  [[noreturn]] void Live(const FakeServer::Answer& fate, bool firstCycle) {
    alarm(100);
    doomed = sync.release();
    std::atexit(FreeAtExit);
    if (!firstCycle) server.Feed(UpdateSet("1", "filter-1"));
    server.Always("WaitForUpdates", fate);
    PropertyTexts list(kMachines);
    doomed->SetupDataSync(Reference("Folder", "root").get(), list, nullptr);
    for (;;) pause();
  }
};

TEST_F(SyncLoopDeathTest, ARequestThatFailedEndsTheProcess) {
  const auto fate = FakeServer::Throw(KELib::RequestFailedException("reset by 100%s"));
  const char* lines = "reset by 100%s\nKECimProvider exiting on Mgmtd exit!!";
  EXPECT_EXIT(Live(fate, true), testing::ExitedWithCode(0), lines);
  EXPECT_EXIT(Live(fate, false), testing::ExitedWithCode(0), lines);
}

TEST_F(SyncLoopDeathTest, ARestartedDaemonEndsTheProcess) {
  const PidFile file;
  const auto fate = [&] {
    file.Write("18\n");
    return "";
  };
  const char* lines = "Empty Response. Resend WFU.\nKECimProvider Exiting on Mgmtd restart!!";
  for (bool firstCycle : {true, false}) {
    file.Write("17\n");
    EXPECT_EXIT(Live(fate, firstCycle), testing::ExitedWithCode(0), lines);
  }
}

}  // namespace
}  // namespace KE::Service
