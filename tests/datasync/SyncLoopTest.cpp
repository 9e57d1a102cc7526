// SPDX-License-Identifier: MIT
//
// The loop that waits for updates: its first cycle, what it does about failures, and its end.
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
  server.AwaitQuietWait(2);
  const auto waits = server.Calls("WaitForUpdates");
  EXPECT_EQ(waits[0].argument, "");
  EXPECT_EQ(waits[1].argument, "one");
  EXPECT_EQ(waits[1].type + " " + waits[1].value, "PropertyCollector pc-1");

  server.Feed(UpdateSet("two", "filter-1", Machine("vm-1", "mail")));
  server.AwaitQuietWait(3);
  EXPECT_EQ(Caches(), "machine vm-1 ElementName=[mail]\n");
  EXPECT_EQ(LastVersion(), "two");
  sync->StartSyncData();  // it runs already
  EXPECT_EQ(server.Count("WaitForUpdates"), 3u);
  EXPECT_TRUE(CapturedLog::Lines().empty());
}

// What is remembered of the data caches from set to set must not outlive them.
TEST_F(SyncLoopTest, ADataCacheMayGoAndComeBackBetweenSets) {
  WatchMachines();
  KELib::KEString type(Stub::ZORBEL_VMComputerSystemClass);
  sync->GetCache()->DeleteDataCache(type);
  server.Feed(UpdateSet("2", "filter-1", Machine("vm-1", "nowhere")));
  server.AwaitQuietWait(3);
  EXPECT_EQ(Status().consecutiveFailures, 1u);
  EXPECT_EQ(Caches(), "");
  sync->GetCache()->CreateDataCache(type);
  server.Feed(UpdateSet("3", "filter-1", Machine("vm-1", "back")));
  server.AwaitQuietWait(4);
  EXPECT_EQ(Caches(), "machine vm-1 ElementName=[back]\n");
  EXPECT_STREQ(Status().lastFailure.Cstr(), "No Data Map found for type :ZORBEL_VMComputerSystem");
}

TEST_F(SyncLoopTest, AFailedFirstCycleIsRepeated) {
  server.FeedError(SystemException("no route"));
  server.Feed("");
  WatchMachines();
  EXPECT_EQ(Caches(), "machine vm-1 ElementName=[first]\n");
  EXPECT_EQ(Status().consecutiveFailures, 0u);
  EXPECT_STREQ(Status().lastFailure.Cstr(), "Empty Response. Resend WFU.");
  EXPECT_GT(Status().lastFailureTime, 0);
}

// A dead server must not hold the caller: the thread goes on trying.
TEST_F(SyncLoopTest, AfterThreeFailuresTheThreadGoesOnAlone) {
  for (int i = 0; i < 3; ++i) server.FeedError(SystemException("no route"));
  Watch(kMachines);
  EXPECT_FALSE(Status().firstFillDone);
  EXPECT_EQ(Status().consecutiveFailures, 3u);
  unsigned long long seen = 0;
  server.Feed(UpdateSet("1", "filter-1", Machine("vm-1", "web")));
  EXPECT_TRUE(sync->WaitForChange(seen, 0));
  EXPECT_TRUE(Status().firstFillDone);
}

TEST_F(SyncLoopTest, NeitherATimeoutNorEndlessCancelsHoldTheCaller) {
  server.FeedError(KELib::RequestTimedOutException("slow"));
  Stub::ManagedObjectReference* filter = Watch(kMachines);
  server.AwaitQuietWait(2);
  EXPECT_FALSE(Status().firstFillDone);
  EXPECT_EQ(Status().consecutiveFailures, 0u);
  sync->StopDataSync(filter);
  server.FeedError(KE::RequestCanceledException("RequestCanceled"));
  AwaitLoopEnd();
  for (int i = 0; i < 4; ++i) server.FeedError(SystemException("RequestCanceled"));
  Watch(kMachines);
  EXPECT_TRUE(Status().loopRunning);
}

// Each pause is a lower limit, so this cannot fail on a slow machine.
TEST_F(SyncLoopTest, RepeatedFailuresAreSpacedOut) {
  WatchMachines();
  for (int i = 0; i < 3; ++i) server.FeedError(SystemException("down"));
  server.Feed(UpdateSet("2", "filter-1"));
  server.FeedError(SystemException("down again"));
  server.AwaitQuietWait(7);
  const auto calls = server.Calls("WaitForUpdates");
  auto gapBehind = [&](std::size_t i) { return calls[i + 1].time - calls[i].time; };
  EXPECT_GE(gapBehind(2), std::chrono::milliseconds(100));
  EXPECT_GE(gapBehind(3), std::chrono::seconds(1));
  EXPECT_GE(gapBehind(5), std::chrono::milliseconds(10));
}

TEST_F(SyncLoopTest, AFilterStoppedDuringAWaitHearsNoMoreAndTheLoopEnds) {
  CountingWaiter waiter;
  WatchMachines();
  sync->StopDataSync(Watch("_p_ _o_ HostSystem name", &waiter));
  EXPECT_EQ(waiter.signals, 1);
  EXPECT_EQ(server.Calls("DestroyPropertyFilter").back().value, "filter-2");
  server.Feed(UpdateSet("2", "filter-2", Machine("vm-2", "late")));
  server.AwaitQuietWait(3);
  EXPECT_TRUE(CapturedLog::Contains("Value : filter-2"));
  // An equal reference of the caller's own does as well; a failing server changes nothing.
  server.Then("DestroyPropertyFilter", FakeServer::Throw(SystemException("gone")));
  sync->StopDataSync(Reference("PropertyFilter", "filter-1").get());
  EXPECT_TRUE(CapturedLog::Contains("Exception Destroying PropFilter : gone"));
  server.Feed(UpdateSet("3", "filter-1", Machine("vm-1", "late")));
  AwaitLoopEnd();
  EXPECT_EQ(server.Count("WaitForUpdates"), 3u);
  EXPECT_EQ(Caches(), "machine vm-1 ElementName=[first]\n");
  // With the next watch it begins again.
  server.Feed(UpdateSet("5", "filter-3", Machine("vm-3", "new")));
  Watch(kMachines);
  EXPECT_EQ(server.Calls("WaitForUpdates")[3].argument, "");
  EXPECT_EQ(Caches(), "machine vm-1 ElementName=[first]\nmachine vm-3 ElementName=[new]\n");
}

TEST_F(SyncLoopTest, AWatchThatCannotBeSetUpLeavesNothingBehind) {
  CountingWaiter waiter;
  PropertyTexts machines(kMachines);
  EXPECT_EQ(TextOf([&] { sync->SetupDataSync(nullptr, machines, &waiter); }),
            "Unable to get data - root object or type name not provided.");
  server.Then("CreateFilter", FakeServer::Throw(SystemException("NoPermission")));
  EXPECT_EQ(TextOf([&] { Watch(kMachines, &waiter); }), "NoPermission");
  EXPECT_TRUE(CapturedLog::Contains("Exception Creating PropFilter : NoPermission"));
  for (const char* answer : {"", "<returnval type=\"PropertyFilter\"></returnval>", "<other/>"}) {
    CapturedLog::Clear();
    server.Then("CreateFilter", FakeServer::Text(answer));
    const std::string text = TextOf([&] { Watch(kMachines, &waiter); });
    EXPECT_TRUE(CapturedLog::Contains("Exception Creating PropFilter : " + text)) << answer;
  }
  // The filter stands already when the method fails: it is taken back.
  server.Then("RetrieveAllPermissions", FakeServer::Throw(SystemException("Busy")));
  EXPECT_EQ(TextOf([&] { Watch(kRoles, &waiter); }), "Busy");
  EXPECT_EQ(server.Calls("DestroyPropertyFilter").back().value, "filter-1");
  sync->StartSyncData();
  EXPECT_EQ(server.Count("WaitForUpdates"), 0u);
}

// A server may hand the same filter out again: the older record's waiter goes, its reference stays.
TEST_F(SyncLoopTest, AFilterHandedOutTwiceKeepsItsReference) {
  CountingWaiter first, second;
  server.Always("CreateFilter",
                FakeServer::Text("<returnval type=\"PropertyFilter\">same</returnval>"));
  server.FeedError(KELib::RequestTimedOutException("slow"));
  Stub::ManagedObjectReference* reference = Watch(kMachines, &first);
  EXPECT_EQ(first.signals, 0);
  EXPECT_EQ(Watch(kMachines, &second), reference);
  EXPECT_EQ(first.signals, 1);
  server.Feed(UpdateSet("1", "same"));
  server.Feed(UpdateSet("2", "same"));
  server.AwaitQuietWait(4);
  EXPECT_EQ(first.signals, 1);
  EXPECT_EQ(second.signals, 1);
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
