// SPDX-License-Identifier: MIT
//
// The interface of values and changes, against the simulated daemon as a process.
#include <kecpp/inventory.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <thread>

#include "endurance/Replay.h"
#include "simulator/driver/Simulator.h"

namespace {

using driver::Eventually;
using driver::Json;
using driver::Simulator;
using endurance::Replay;
using kecpp::Inventory;
using kecpp::Kind;
using std::chrono::milliseconds;

class InventoryTest : public testing::Test {
 protected:
  kecpp::Options Options() {
    kecpp::Options options;
    options.config = simulator.Config();
    return options;
  }

  // Takes changes until the replay is the truth.
  void Follow(kecpp::Follower& follower, Replay& replay) {
    Json truth;
    EXPECT_TRUE(Eventually([&] {
      follower.Wait(milliseconds(100));
      replay.TakeAll(follower);
      truth = endurance::Decoded(simulator.Truth());
      return replay.Document() == truth;
    })) << Json::diff(replay.Document(), truth);
    EXPECT_TRUE(replay.EqualsInventory());
    EXPECT_EQ(replay.Wrong(), "");
  }

  std::string Create(const std::string& name) {
    return simulator.Control("machine",
                             {{"do", "create"}, {"name", name}, {"host", AnyHost()}})["id"];
  }
  std::string AnyHost() { return simulator.Truth()["hosts"][0]["Name"]; }

  Simulator simulator{{"--machines", "300", "--hosts", "4", "--churn", "0"}};
};

TEST_F(InventoryTest, ReadsOneAllAndInPieces) {
  Create("a &amp; b");
  const Inventory inventory(Options());
  const Json truth = simulator.Truth();
  EXPECT_EQ(inventory.State().state, kecpp::Status::State::connected);
  EXPECT_TRUE(inventory.State().hasAuthorization);
  const std::vector<kecpp::Machine> machines = inventory.Machines();
  ASSERT_EQ(machines.size(), 301U);
  EXPECT_EQ(inventory.Count(Kind::machine), 301U);
  std::size_t decoded = 0;
  for (const kecpp::Machine& machine : machines) {
    EXPECT_EQ(inventory.FindMachine(machine.key), machine);
    ASSERT_TRUE(machine.host);
    EXPECT_THAT(inventory.FindHost(*machine.host)->machines, testing::Contains(machine.key));
    EXPECT_EQ(machine.powerState == kecpp::PowerState::on, machine.powerStateText == "poweredOn");
    decoded += machine.name == "a & b" ? 1 : 0;
  }
  EXPECT_EQ(decoded, 1U);
  EXPECT_FALSE(inventory.FindMachine("none"));
  EXPECT_FALSE(inventory.FindMachine("a&b"));
  std::size_t visited = 0;
  inventory.ForEach<kecpp::MachineView>([&](const kecpp::MachineView&) { ++visited; });
  EXPECT_EQ(visited, machines.size());
  EXPECT_EQ(inventory.Roles().size(), truth["roles"].size());
  EXPECT_EQ(inventory.Privileges().size(), truth["privileges"].size());
  EXPECT_EQ(inventory.Identities().size(), truth["identities"].size());
}

// A walk goes on in the caches of another connection.
TEST_F(InventoryTest, ReadsInPortionsWhateverHappensInBetween) {
  const Inventory inventory(Options());
  kecpp::Walk walk;
  std::map<std::string, int> met;
  const auto next = [&](std::size_t most) {
    std::size_t count = 0;
    const bool more = inventory.ForNext<kecpp::MachineView>(
        walk, most,
        [&](const kecpp::MachineView& machine) { ++met[std::string(machine.key)], ++count; });
    EXPECT_LE(count, most);
    return more;
  };
  for (const std::size_t most : {1U, 2U, 40U}) EXPECT_TRUE(next(most));
  simulator.Control("session-lost");
  ASSERT_TRUE(Eventually([&] { return inventory.State().connections == 2; }));
  while (next(7)) continue;
  EXPECT_EQ(met.size(), 300U);
  for (const auto& [key, times] : met) EXPECT_EQ(times, 1) << key;
}

TEST_F(InventoryTest, WhatChangesMakesTheTruth) {
  const Inventory inventory(Options());
  kecpp::Follower early = inventory.Follow();
  Replay first(inventory);
  simulator.Control("churn", {{"rate", 200}});
  kecpp::Follower late = inventory.Follow();
  Replay second(inventory);
  for (int round = 0; round < 20; ++round) {  // one reads at once, the other now and then
    early.Wait(milliseconds(20));
    first.TakeAll(early);
    if (round % 8 == 7) second.TakeAll(late);
  }
  simulator.Control("churn", {{"rate", 0}});
  Follow(early, first);
  Follow(late, second);
}

TEST_F(InventoryTest, AfterALostSessionThereIsOnlyWhatDiffers) {
  const std::string leaves = Create("leaves");
  auto inventory = std::make_unique<Inventory>(Options());
  kecpp::Follower follower = inventory->Follow();
  kecpp::Follower untouched = inventory->Follow();  // takes nothing until the end
  std::vector<kecpp::Follower> crowd;               // after the one that looks at once
  while (crowd.size() < 100) crowd.push_back(inventory->Follow());
  Replay replay(*inventory);
  Follow(follower, replay);
  const kecpp::Status before = inventory->State();

  simulator.Control("session-lost");
  simulator.Control("machine", {{"do", "remove"}, {"id", leaves}});
  const std::string comes = Create("comes");
  simulator.SetMachine("vm-1", "name", "renamed");
  replay.namedMachines.clear();
  Follow(follower, replay);
  ASSERT_TRUE(Eventually([&] { return inventory->State().connections == 2; }))
      << inventory->State().reason;
  EXPECT_EQ(inventory->State().state, kecpp::Status::State::connected);
  // Who may do what may have been taken away for a while.
  EXPECT_THAT(replay.namedMachines, testing::UnorderedElementsAre(leaves, comes, "vm-1"));
  EXPECT_GT(inventory->State().since, before.since);

  Replay late(*inventory);
  Follow(untouched, late);
  std::thread waiting([&] {
    while (follower.Wait(std::chrono::hours(1))) follower.Next();
  });
  inventory.reset();
  waiting.join();
  EXPECT_TRUE(follower.Closed());
  EXPECT_TRUE(follower.Next().empty());
}

TEST_F(InventoryTest, FollowsFromBeforeTheFirstConnection) {
  kecpp::Options options = Options();
  options.connectInBackground = true;
  const Inventory inventory(options);
  std::vector<kecpp::Follower> all;
  while (all.size() < 100) all.push_back(inventory.Follow());
  Replay replay(inventory);
  Follow(all.front(), replay);
}

// The lists of roles and of permissions come one after the other, and one needs the other.
TEST(InventoryOfASlowDaemon, HasAllLinksOnceItIsConnected) {
  Simulator simulator({"--machines", "0", "--hosts", "1"});
  for (const char* method : {"WaitForUpdates", "RetrieveAllPermissions"}) {
    simulator.Control("fault",
                      {{"method", method}, {"kind", "drip"}, {"count", 100}, {"delayMs", 1}});
  }
  kecpp::Options options;
  options.config = simulator.Config();
  const Inventory inventory(options);
  EXPECT_THAT(inventory.FindIdentity("root")->roles, testing::ElementsAre("1"));
}

// What has not come again yet has not gone.
TEST(InventoryOfASlowDaemon, NamesNobodyWhenItsReportComesAgainInParts) {
  Simulator simulator({"--machines", "300", "--hosts", "4", "--max-objects", "25"});
  kecpp::Options options;
  options.config = simulator.Config();
  const Inventory inventory(options);
  ASSERT_TRUE(Eventually([&] { return inventory.Count(Kind::machine) == 300; }));
  kecpp::Follower follower = inventory.Follow();
  Replay replay(inventory);
  replay.TakeAll(follower);
  replay.namedMachines.clear();
  simulator.Control("session-lost");
  ASSERT_TRUE(Eventually([&] { return inventory.State().connections == 2; }));
  EXPECT_EQ(inventory.Count(Kind::machine), 300u);
  replay.TakeAll(follower);
  EXPECT_THAT(replay.namedMachines, testing::IsEmpty());
}

// A connection that was lost takes its time to end as well.
TEST_F(InventoryTest, EndsInTimeWhileTheDaemonHangs) {
  for (const char* method : {"Logout", "CancelWaitForUpdates"}) {
    auto inventory = std::make_unique<Inventory>(Options());
    simulator.Control("fault", {{"method", method}, {"kind", "hang"}, {"count", 1000}});
    const int calls = simulator.Stats()["calls"].value("Logout", 0);
    simulator.Control("session-lost");
    ASSERT_TRUE(Eventually([&] { return simulator.Stats()["calls"].value("Logout", 0) > calls; }));
    const auto begin = std::chrono::steady_clock::now();
    inventory.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5)) << method;
    simulator.Control("fault", {{"kind", "clear"}});
  }
}

TEST_F(InventoryTest, SaysWhyThereIsNone) {
  const auto failure = [](kecpp::Options options) {
    try {
      const Inventory inventory(options);
      return std::string("connected");
    } catch (const kecpp::Error& error) {
      return error.Url() + " | " + error.Reason();
    }
  };
  kecpp::Options options = Options();
  const std::string url = "http://127.0.0.1:1/sdk";
  options.config = "<?xml version=\"1.0\"?><Config><ConnectionInfo><url>" + url +
                   "</url></ConnectionInfo></Config>";
  EXPECT_EQ(failure(options), url + " | connection refused");
  {
    kecpp::Options background = options;
    background.connectInBackground = true;
    const Inventory inventory(background);
    EXPECT_TRUE(inventory.WaitForState({}, std::chrono::minutes(1)));
    EXPECT_EQ(inventory.State().state, kecpp::Status::State::connecting);
    EXPECT_EQ(inventory.State().reason, url + ": connection refused");
    EXPECT_TRUE(inventory.Machines().empty());
  }
  options.config = "/no/such/file";
  EXPECT_EQ(failure(options), " | cannot read /no/such/file");
  options = Options();
  options.config = simulator.Config("root", "wrong");
  EXPECT_THAT(failure(options), testing::HasSubstr("login refused"));
  options = Options();
  options.connectTimeout = milliseconds(50);
  simulator.Control("fault", {{"method", "Login"}, {"kind", "hang"}});
  EXPECT_THAT(failure(options), testing::HasSubstr("not connected within 50 milliseconds"));
}

TEST_F(InventoryTest, CallsMethodsAndWaitsForTasksUntilItIsClosed) {
  Inventory inventory(Options());
  EXPECT_TRUE(inventory.RunTask("StartTask", {"VirtualMachine", "vm-1"}));
  EXPECT_THAT(inventory.Invoke("StartTask", {"VirtualMachine", "vm-1"}),
              testing::HasSubstr("task"));
  EXPECT_THROW(inventory.Invoke("NoSuchMethod", {"VirtualMachine", "vm-1"}), kecpp::Error);
  inventory.Close();
  EXPECT_FALSE(inventory.Follow().Wait(std::chrono::hours(1)));
}

}  // namespace
