// SPDX-License-Identifier: MIT
//
// An agent on kecpp::Inventory meets every fault of docs/failures.md in every call of the library.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kecpp/inventory.h>

#include <algorithm>

#include "endurance/Replay.h"
#include "faults/Lives.h"
#include "faults/Stage.h"
#include "faults/Tables.h"

namespace faults {
namespace {

using kecpp::Inventory;
using Clock = std::chrono::steady_clock;

// When the call is made: while a connection is made, while it is used or when it ends.
bool IsOfUse(const std::string& call) {
  return call.find("later") != std::string::npos || call == "your own call";
}
bool IsOfEnd(const std::string& call) {
  return call == "Logout" || call == "CancelWaitForUpdates";
}

// Without a certificate there is no connection to meet anything on.
bool CannotCall(const std::string& fault) {
  return fault == "certificates-gone" || fault == "key-gone";
}

// The daemon's process has changed, and a sync thread notices: one whose waits fail.
bool EndsTheProcess(const std::string& fault, const std::string& call) {
  if (fault == "restart") return call != "CancelWaitForUpdates";  // met while the Inventory ends
  return fault == "pid-gone" && !IsOfEnd(call) && call != "your own call" &&
         call != "RetrieveAllPermissions: later";
}

// Lives of a Follower. A fault meets it, then again while it ends.
class Agent {
 public:
  Agent(const std::string& kind, const Row& scene)
      : stage(kind, false), fault(kind), call(scene[0]), method(scene[1]) {}

  void Live() {
    AwaitTruth();
    replay.namedMachines.clear();
    const std::set<std::string> changed = Meet();
    if (EndsTheProcess(fault, call)) pause();  // until then, or until the alarm
    EXPECT_GT(inventory->Count(kecpp::Kind::machine), 0u) << "what was known is gone";
    stage.EndFault();
    AwaitTruth();
    // Also where the daemon reports all again, since it does not know what arrived.
    EXPECT_EQ(replay.namedMachines, changed);
    IsOfEnd(call) ? stage.BeginFault(method) : (void)Meet();
    const auto begin = Clock::now();
    inventory.reset();
    const std::chrono::duration<double> took = Clock::now() - begin;
    EXPECT_LT(took.count(), 5);
    EXPECT_TRUE(follower.Closed());
  }

 private:
  // The machines that are changed until the fault has been met.
  std::set<std::string> Meet() {
    const unsigned long long connections = inventory->State().connections;
    const Json machines = stage.Daemon().Truth()["machines"];
    const std::string leaves = machines[0]["Name"], renamed = machines[1]["Name"];
    stage.Daemon().Control("machine", {{"do", "remove"}, {"id", leaves}});
    const std::string comes = stage.Daemon().Control(
        "machine", {{"do", "create"}, {"name", "new"}, {"host", machines[0]["host"]}})["id"];
    if (IsOfEnd(call)) AwaitRest();
    stage.BeginFault(method);
    const int calls = stage.CallsOf(method);
    if (!IsOfUse(call)) stage.Daemon().Control("session-lost");
    EXPECT_TRUE(Eventually([&] {
      stage.Daemon().SetMachine(renamed, "name", "name " + std::to_string(++names));
      replay.TakeAll(follower);
      if (call == "your own call" && !InvokeWorks()) return true;
      if (IsOfEnd(call) && !CannotCall(fault)) return inventory->State().connections > connections;
      return stage.CallsOf(method) > calls + (IsOfUse(call) ? 1 : 0) ||
             (CannotCall(fault) && inventory->State().state == kecpp::Status::State::lost);
    })) << "the fault is never met";
    return {leaves, renamed, comes};
  }

  // A session that is lost between two waits makes a method fail; the loop then cancels a wait for
  // its sake, and the fault is met too early.
  void AwaitRest() {
    AwaitTruth();
    EXPECT_TRUE(Eventually([&] { return stage.Holds("daemon: a wait", {}); }));
  }

  bool InvokeWorks() {
    try {
      inventory->Invoke(method, {"VirtualMachine", "success"});
      return true;
    } catch (const kecpp::Error&) {
      return false;
    }
  }

  void AwaitTruth() {
    Json truth;
    EXPECT_TRUE(Eventually([&] {
      replay.TakeAll(follower);
      truth = endurance::Decoded(stage.Daemon().Truth());
      return replay.Document() == truth && replay.EqualsInventory();
    })) << Json::diff(replay.Document(), truth)
        << inventory->State().reason;
    EXPECT_EQ(replay.Wrong(), "");
  }

  Stage stage;
  const std::string fault, call, method;
  std::unique_ptr<Inventory> inventory =
      std::make_unique<Inventory>(kecpp::Options{stage.Config()});
  kecpp::Follower follower = inventory->Follow();
  endurance::Replay replay{*inventory};
  int names = 0;
};

TEST(InventoryMatrix, EndsWithTheTruth) {
  std::vector<Life> lives;
  for (const Row& scene : ReadRows(KECPP_SCENES)) {
    if (scene[1] == "DestroyPropertyFilter") continue;  // nobody stops a watch of an Inventory
    for (const Entry& met : ReadTable(KECPP_FAILURES, "Met by")) {
      const std::string fault = met.at("Met by"), name = scene[0] + " met by " + fault;
      lives.push_back({name, EndsTheProcess(fault, scene[0]), [=] {
                         SCOPED_TRACE(name);
                         alarm(150);
                         Agent(fault, scene).Live();
                       }});
    }
  }
  // Those that take longest begin first.
  std::stable_partition(lives.begin(), lives.end(), [](const Life& life) {
    return Matches(life.name, "* met by h*");  // hang, huge
  });
  LiveAll(lives, 32);
}

}  // namespace
}  // namespace faults
