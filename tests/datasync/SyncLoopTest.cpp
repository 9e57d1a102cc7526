// SPDX-License-Identifier: MIT
//
// The loop that waits for updates, where the files of loop/ cannot look: readers beside it, times,
// stops from other threads, and the end of the process.
#include <algorithm>
#include <functional>
#include <future>
#include <vector>

#include "datasync/SyncFixture.h"
#include "datasync/SyncState.h"
#include "foundation/KEMutexGuard.h"
#include "http/CallLimits.h"
#include "http/Interrupter.h"
#include "instance/KEChangeFeed.h"
#include "stub/base/KEStubRef.h"
#include "stub/classes/ClassNames.h"
#include "stub/classes/ZORBEL_VMComputerSystem.h"
#include "xml/KEXmlBuffer.h"
#include "xml/KEXmlReader.h"

namespace KE::Service {
namespace {

using KELib::SystemException;

class SyncLoopTest : public SyncFixture {};

// Under the names that programs were built with.
TEST_F(SyncLoopTest, ThePartsWorkWithoutTheLoop) {
  const RefPtr root = Reference("Folder", "root");
  PropertyTexts list("_p_ _o_ VirtualMachine name _t_ walk _o_ Folder _p_ childEntity");
  KELib::Xml::KEXmlBuffer whole, parts, walk;
  KEDataSyncImpl::CreateFilterSpec(root.get(), list, whole);
  KEDataSyncImpl::CreatePropertySet(list, parts);
  KEDataSyncImpl::CreateObjectSet(root.get(), list, parts);
  KEDataSyncImpl::CreateSelectSet(list, walk);
  EXPECT_EQ(whole.Cstr(), "<spec>\n" + std::string(parts.Cstr()) + "</spec>\n");
  EXPECT_LT(parts.Find(walk, 0), parts.Length());
  EXPECT_GT(walk.Length(), 0u);

  PropertyTexts machines(kMachines);
  sync->StartSyncData();  // nothing is watched
  Stub::ManagedObjectReference* filter = sync->CreatePropFilter(root.get(), machines, nullptr);
  server.Feed(UpdateSet("1", "filter-1", Machine("vm-1", "first")));
  sync->SyncData();
  EXPECT_EQ(Caches(), "machine vm-1 ElementName=[first]\n");
  EXPECT_EQ(server.Calls("WaitForUpdates").at(0).value, "pc-1");
  KELib::KEString set(UpdateSet("2", "filter-1", Machine("vm-1", "second")).c_str());
  KELib::Xml::KEXmlReader reader(set, false, 0);
  UpdateInfo ui("val", nullptr);
  sync->UpdateSetToCache(ui, reader);
  ui.obj.type = "Task";
  sync->UpdateMissingType(ui, reader);
  sync->StopDataSync(nullptr);
  EXPECT_EQ(Caches(), "machine vm-1 ElementName=[second]\n");
  sync->RestartDataSync();
  sync->DestroyPropFilter(filter);
  EXPECT_EQ(server.Count("CancelWaitForUpdates") + server.Count("DestroyPropertyFilter"), 2u);

  server.Always("RetrieveAllPermissions",
                FakeServer::Text("<returnval><principal>ann</principal></returnval>"));
  auto* methods = Watch("_m_ RetrieveAllPermissions _co_ Zorbel_Identity");
  const std::string before = Caches();
  sync->CleanupSessionUserPermissions();
  EXPECT_NE(Caches(), before);
  sync->PropMethodToCache();
  EXPECT_EQ(Caches(), before);
  sync->DestroyPropMethod(methods);
  EXPECT_NE(Caches(), before);
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

// It is called once a second, the others in each cycle. Each gap is a lower limit. A look for the
// daemon, which is another by now, would end the process.
TEST_F(SyncLoopTest, AFailingMethodHoldsUpNothingElse) {
  const PidFile file;
  static std::atomic<int> ends{0};
  GetMgmtdWatchSeams().exitProcess = [](int) { ++ends; };
  WatchMachines();
  for (const char* name : {"First", "Failing", "Last"}) Watch(std::string("_m_ ") + name);
  file.Write("18\n");
  server.Always("Failing", FakeServer::Throw(SystemException("down")));
  const std::size_t before = server.Count("Failing");
  const auto cycle = [&] {
    const std::size_t waits = server.Count("WaitForUpdates");
    const std::size_t first = server.Count("First"), last = server.Count("Last");
    server.Feed(UpdateSet("2", "filter-1"));
    AwaitQuietWait(waits + 1);
    EXPECT_EQ(server.Count("First") - first, 1u);
    EXPECT_EQ(server.Count("Last") - last, 1u);
  };
  cycle();
  EXPECT_EQ(Status().consecutiveFailures, 1u);
  while (server.Count("Failing") < before + 3) cycle();
  const auto calls = server.Calls("Failing");
  EXPECT_GE(calls[before + 1].time - calls[before].time, std::chrono::seconds(1));
  EXPECT_GE(calls[before + 2].time - calls[before + 1].time, std::chrono::seconds(1));
  server.Always("Failing", nullptr);
  while (server.Count("Failing") < before + 6) cycle();
  EXPECT_EQ(Status().consecutiveFailures, 0u);
  EXPECT_EQ(ends, 0);
}

// A new login begins with the shortest pause; otherwise every pause from the third on would last a
// second. A loaded machine may stretch one, but not four.
TEST_F(SyncLoopTest, ANewLoginForgetsTheFailuresOfTheLast) {
  auto shortest = std::chrono::steady_clock::duration::max();
  for (int login = 1; login <= 6; ++login) {
    const std::size_t waits = server.Count("WaitForUpdates");
    server.FeedError(SystemException("down"));
    server.FeedError(KELib::RequestTimedOutException("quiet"));
    Watch(kMachines);
    AwaitQuietWait(waits + 3);
    const auto calls = server.Calls("WaitForUpdates");
    if (login > 2) shortest = std::min(shortest, calls[waits + 1].time - calls[waits].time);
    sync->RequestStop();
    AwaitLoopEnd();
  }
  EXPECT_LT(shortest, std::chrono::seconds(1));
}

TEST_F(SyncLoopTest, NothingIsSentWithoutARootOrWithoutAWaiterForATask) {
  PropertyTexts machines(kMachines);
  EXPECT_EQ(Thrown([&] { sync->SetupDataSync(nullptr, machines, nullptr); }),
            "SystemException: Unable to get data - root object or type name not provided.");
  EXPECT_FALSE(WaitForTask("task-1", nullptr));
  EXPECT_TRUE(CapturedLog::Contains("No waiter provided to wait for task."));
  EXPECT_EQ(server.Count(""), 0u);
  server.FeedError(KELib::RequestTimedOutException("first cycle"));
  Watch("_p_ _o_ Task info.state");  // nor does a watch of a task block then
}

// A second report of the end that comes while the filter is being destroyed files the task again.
TEST_F(SyncLoopTest, ALateReportOfATaskLeavesNoStubBehind) {
  WatchMachines();
  CountingWaiter waiter;
  std::thread feeder([&] {
    server.AwaitCalls("CreateFilter", 2);
    for (const char* version : {"2", "3", "4"}) {
      server.Feed(
          UpdateSet(version, "filter-2", Object("Task", "task-1", "info.state", "success")));
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
    const std::string uuid = "</val></changeSet><changeSet><name>config.uuid</name><val>" + n;
    server.Feed(UpdateSet(n, "filter-1", Machine("vm-1", n + uuid)));
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

// --- stopping from other threads -----------------------------------------------------------------

class SyncStopTest : public SyncFixture {};

// A caller in the first cycle, one that waits for it, and ones that wait for a task and a change.
TEST_F(SyncStopTest, CleanupLetsBlockedCallersGo) {
  CountingWaiter waiters[2];
  std::vector<std::thread> callers;
  callers.emplace_back([&] { Watch(kMachines, &waiters[0]); });
  server.AwaitCalls("WaitForUpdates", 1);
  std::atomic<bool> mayReturn{false};
  callers.emplace_back([&] {
    Watch("_p_ _o_ HostSystem name");
    EXPECT_TRUE(mayReturn);
  });
  callers.emplace_back([&] { EXPECT_FALSE(WaitForTask("task-1", &waiters[1])); });
  callers.emplace_back([&] {
    unsigned long long seen = 0;
    Thrown([&] { EXPECT_FALSE(sync->WaitForChange(seen, 0)); });  // or it came too late to get in
  });
  server.AwaitCalls("CreateFilter", 3);
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  mayReturn = true;
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
      EXPECT_EQ(Thrown(entry), "SystemException: The data sync is being stopped.");
    }
    return "";
  });
  sync->Cleanup();
  EXPECT_EQ(server.Count("CreateFilter"), 1u);
}

// It is cut off, and what is called afterwards is not.
TEST_F(SyncStopTest, AWaitThatNoCancelEndsIsInterrupted) {
  const auto isCut = [] {
    return KELib::Http::CallLimits::Current()->GetInterrupter()->IsInterrupting();
  };
  WatchMachines();
  std::promise<void> deaf;
  server.Then("WaitForUpdates", [&] {
    deaf.set_value();
    while (!isCut()) std::this_thread::yield();
    return "";
  });
  deaf.get_future().wait();
  sync->Cleanup();
  server.Then("DestroyPropertyFilter", [&] {
    EXPECT_FALSE(isCut());
    return "";
  });
  sync->DestroyPropFilter(collector.get());
  EXPECT_EQ(server.Count("DestroyPropertyFilter"), 1u);
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
  std::this_thread::sleep_for(std::chrono::milliseconds(100));  // without a pause it waits again
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

TEST_F(SyncStopTest, AFeedsReaderIsWokenAndLetGo) {
  WatchMachines();
  KE::Instance::KEChange changes[3];
  std::unique_ptr<KE::Instance::KEChangeFeed> feed;
  KELib::KEString type(Stub::ZORBEL_VMComputerSystemClass), key("vm-1");
  KE::Instance::KEDataCache* cache = sync->GetCache()->GetDataCache(type);
  const std::pair<int, std::function<void()>> ends[] = {
      {1, [&] { server.Feed(UpdateSet("2", "filter-1", Machine("vm-1", "changed"))); }},
      {1, [&] { cache->SetVal(key, Stub::CreateZORBEL_VMComputerSystem()); }},  // in no update set
      {-1, [&] { feed->Close(); }},
      {-1, [&] { sync->RequestStop(); }}};
  for (const auto& [taken, end] : ends) {
    feed.reset(sync->OpenChangeFeed());
    EXPECT_EQ(1, feed->Take(changes, 3, -1));
    EXPECT_EQ(0, feed->Take(changes, 3, 1));
    auto reader = std::async(std::launch::async, [&] { return feed->Take(changes, 3, -1); });
    reader.wait_for(std::chrono::milliseconds(5));  // mostly it waits by now
    end();
    EXPECT_EQ(taken, reader.get());
  }

  // The next watch finds another inventory. Until it is set up the feed says nothing.
  server.Then("WaitForUpdates", [&] {
    EXPECT_EQ(0, feed->Take(changes, 3, 0));
    return UpdateSet("9", "filter-2", Machine("vm-2", "second"));
  });
  Watch(kMachines);
  EXPECT_EQ(2, feed->Take(changes, 3, -1));
  EXPECT_EQ(KE::Instance::KEChange::Kind::removed, changes[0].kind);
  EXPECT_STREQ("vm-2", changes[1].key.Cstr());
  sync->Cleanup();
  EXPECT_EQ(1, feed->Take(changes, 3, -1));
  sync.reset();
  EXPECT_EQ(-1, feed->Take(changes, 3, -1));
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

// A watch after a stop begins when the old loop has left: that one would use what is forgotten.
// While it has not, its wait is cancelled again and again.
TEST_F(SyncStopTest, AWatchAfterAStopAwaitsTheLoop) {
  WatchMachines();
  std::promise<void> held, left;
  server.Then("WaitForUpdates", [&] {
    held.set_value();
    left.get_future().wait();
    return UpdateSet("2", "filter-1", Machine("vm-1", "late"));
  });
  held.get_future().wait();
  sync->RequestStop();
  std::thread agent([&] {
    server.Then("CreateFilter", [&] {
      EXPECT_FALSE(Status().loopRunning);
      server.Feed(UpdateSet("1", "filter-2", Machine("vm-2", "new")));
      return "<returnval type=\"PropertyFilter\">filter-2</returnval>";
    });
    Watch(kMachines);
  });
  const auto cancels = [&] { return server.Count("CancelWaitForUpdates"); };
  while (cancels() < 4 && server.Count("CreateFilter") < 2) std::this_thread::yield();
  EXPECT_EQ(server.Count("CreateFilter"), 1u);
  EXPECT_EQ(Caches(), "machine vm-1 ElementName=[first]\n");
  left.set_value();
  agent.join();
  EXPECT_EQ(Caches(), "machine vm-2 ElementName=[new]\n");
}

// Announced until the threads have come back: a stop that came before they waited says nothing to
// them, and without a wake-up they never come back.
TEST_F(SyncStopTest, AStopWakesWhoWaitsWithoutALoop) {
  SyncState waited;
  waited.SetPhase(SyncState::Phase::running);
  const std::atomic<bool> unseen{false};  // only the number of stops tells them
  EXPECT_FALSE(waited.BeginFirstCycle(unseen)) << "there is a loop";
  std::atomic<bool> stopped{false};
  std::atomic<int> inside{2};
  std::thread changes([&] {
    unsigned long long seen = 0;
    EXPECT_FALSE(waited.WaitForChange(seen, 0, unseen));
    --inside;
  });
  std::thread task([&] {
    TaskWait wait;
    waited.WaitForRelease(wait, unseen);
    EXPECT_FALSE(wait.released);
    --inside;
  });
  for (; inside > 0; std::this_thread::yield()) waited.AnnounceStop(stopped);
  changes.join();
  task.join();
  waited.SetPhase(SyncState::Phase::idle);
  EXPECT_FALSE(waited.BeginFirstCycle(stopped));
}

// The setup that fails has nothing left to take back, and looks at nothing of it.
TEST_F(SyncStopTest, AWatchMayBeStoppedBeforeItsSetupFails) {
  for (const bool everything : {false, true}) {
    CountingWaiter waiter;
    server.Then("RetrieveAllPermissions", [&]() -> std::string {
      if (!everything) sync->StopDataSync(Reference("PropertyFilter", "filter-1").get());
      if (everything) sync->RequestStop();
      throw SystemException("down");
    });
    EXPECT_EQ(Thrown([&] { Watch(kRoles, &waiter); }), "SystemException: down");
    EXPECT_EQ(waiter.signals, 1) << "the caller may destroy it";
    ASSERT_EQ(server.Count("DestroyPropertyFilter"), 1u);
    EXPECT_EQ(server.Calls("DestroyPropertyFilter")[0].value, "filter-1");
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
