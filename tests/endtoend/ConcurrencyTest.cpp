// SPDX-License-Identifier: MIT
//
// Many threads in one library, and threads that have to be let go.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <future>
#include <thread>

#include "agent/WatchList.h"
#include "endtoend/LibraryAgent.h"
#include "endtoend/Simulator.h"

namespace endtoend {
namespace {

// Both ends of every link name each other: a reader that holds both mutexes sees no half change.
bool LinksAgree(const Json& inventory) {
  std::size_t links = 0;
  for (const Json& host : inventory["hosts"]) links += host["machines"].size();
  for (const Json& machine : inventory["machines"]) links -= machine["host"].is_null() ? 0 : 1;
  return links == 0;
}

// A watch comes and goes while the others go on.
void WatchForAWhile(LibraryAgent& agent) {
  KELib::KEString type("Folder"), value("group-d1");
  std::unique_ptr<KE::Stub::ManagedObjectReference> root(
      KE::Stub::CreateManagedObjectReference(type, value));
  KELib::KEVector<KELib::KEString> list;
  inventory::ListSystems(list);
  std::unique_ptr<KELib::KEWaiter> waiter(KELib::CreateKEWaiter());
  auto* filter = agent.Sync().SetupDataSync(root.get(), list, waiter.get());
  EXPECT_TRUE(waiter->Wait(60000));
  agent.Sync().StopDataSync(filter);
}

TEST(Concurrency, ReadersSeeWholeChangesWhileFiltersComeAndGo) {
  Simulator simulator({"--hosts", "4", "--machines", "60"});
  LibraryAgent agent(simulator.Config());
  for (int life = 0; life < 3; ++life) {
    simulator.Control("churn", {{"rate", 200}});
    std::atomic<bool> park{false};
    std::atomic<unsigned> torn{0};
    std::vector<std::thread> readers;
    for (int i = 0; i < 3; ++i) {
      readers.emplace_back([&] {
        while (!park) torn += LinksAgree(agent.Read()) ? 0 : 1;
      });
    }
    for (int i = 0; i < 10; ++i) WatchForAWhile(agent);
    simulator.Control("churn", {{"rate", 0}});
    agent.ExpectToBecome(simulator.Truth());
    park = true;
    for (std::thread& reader : readers) reader.join();
    EXPECT_EQ(torn, 0u);
    agent.Connect();  // stops this service instance and makes another
    agent.ExpectToBecome(simulator.Truth());
  }
}

TEST(Concurrency, BlockedThreadsAreLetGoWhenTheInstanceIsFreed) {
  Simulator simulator({});
  LibraryAgent agent(simulator.Config());
  KE::Service::KEDataSync& sync = agent.Sync();
  KELib::KEString response;
  agent.Connection().Method().Invoke(KE::Service::targetNamespace, "StartTask", "VirtualMachine",
                                     "hang", response);
  const int filters = simulator.Stats()["filters"];
  auto task = std::async(std::launch::async, [&] {
    std::unique_ptr<KELib::KEWaiter> waiter(KELib::CreateKEWaiter());
    return sync.WaitForTask(response, waiter.get());
  });
  auto change = std::async(std::launch::async, [&] {
    unsigned long long seen = 1u << 30;
    return sync.WaitForChange(seen, 0);
  });
  ASSERT_TRUE(Eventually([&] { return simulator.Stats()["filters"] > filters; }));
  agent.Disconnect();
  EXPECT_FALSE(task.get());
  EXPECT_FALSE(change.get());
}

TEST(Concurrency, AnInstanceEndsThoughTheDaemonAnswersNothingMore) {
  Simulator simulator({});
  LibraryAgent agent(simulator.Config());
  ASSERT_TRUE(Eventually([&] { return simulator.Stats()["waits"] == 1; }));
  simulator.Control("fault", {{"kind", "hang"}, {"count", 1000}});
  agent.Disconnect();
  simulator.Control("fault", {{"kind", "clear"}});
  agent.Connect();
  agent.ExpectToBecome(simulator.Truth());
}

TEST(Concurrency, TheDataSyncIsUsableAgainAfterALogout) {
  Simulator simulator({});
  LibraryAgent agent(simulator.Config());
  agent.Sync().RequestStop();
  unsigned long long seen = 1u << 30;
  EXPECT_FALSE(agent.Sync().WaitForChange(seen, 60000));
  agent.Sync().Cleanup();
  inventory::EndOfRun end(0);
  agent.Connection().Watch(end);
  agent.ExpectToBecome(simulator.Truth());
}

}  // namespace
}  // namespace endtoend
