// SPDX-License-Identifier: MIT
//
// The whole play: service instances are created, used by many threads at once, logged out and in,
// and freed or replaced, while the daemon changes its inventory and loses answers. The caches equal
// the truth at the end of each instance's life. KECPP_STRESS_SECONDS says how long, 10 without.
#include <gtest/gtest.h>
#include <kecpp.h>

#include <cstdlib>
#include <iostream>
#include <stdexcept>

#include "simulator/driver/Simulator.h"
#include "stress/Scene.h"
#include "support/ReadCaches.h"
#include "support/Rows.h"
#include "support/Watches.h"

namespace stress {
namespace {

using namespace KE::Service;
using driver::Json;

constexpr std::chrono::seconds TRUTH_LIMIT(30);

// The simulated daemon and who tells it what to do. Thread safety: any thread.
class Daemon {
 public:
  Daemon(Board& board, Tally& counts)
      : tally(counts), player(board, "daemon", [this](Seat& seat) { return Act(seat); }) {}

  driver::Simulator simulator{{"--hosts", "4", "--machines", "40"}};

  // While calm nothing changes and nothing goes wrong.
  void Calm() {
    const std::lock_guard<std::mutex> lock(mutex);
    calm = true;
    simulator.Control("churn", {{"rate", 0}});
    simulator.Control("fault", {{"kind", "clear"}});
  }
  void Rave() {
    const std::lock_guard<std::mutex> lock(mutex);
    calm = false;
  }

 private:
  bool Act(Seat& seat) {
    seat.Does("orders a change");
    std::unique_lock<std::mutex> lock(mutex);
    if (!calm) {
      const Row& order = orders[turn++ % orders.size()];
      simulator.Control(order.at(0), Json::parse(order.at(1)));
      tally.Count("orders to the daemon");
    }
    lock.unlock();
    Nap(150);
    return true;
  }

  Tally& tally;
  const std::vector<Row> orders = ReadRows(KECPP_STRESS_ORDERS);
  std::mutex mutex;  // held while it acts; guards what follows
  bool calm = true;
  unsigned turn = 0;
  Player player;
};

// A service instance of its own, beside the one that is played with: it comes and goes all the
// time.
void Commute(KEServiceInstManager& manager, const std::string& config, Seat& seat, Tally& tally) {
  seat.Does("connects (manager's mutex, network)");
  KEServiceInst* instance = manager.GetServiceInstance(config.c_str(), DEFAULT_CONFIG_CONTENT);
  if (!instance) {
    KEConnectFailure failure;  // an Inventory that ends before it is connected cuts all attempts
    manager.GetLastFailure(failure);
    const bool wasCut = failure.kind == KEConnectFailureKind::interrupted ||
                        failure.kind == KEConnectFailureKind::none;  // a later attempt's
    return wasCut ? tally.Count("commutes cut") : tally.Wrong("the commuter got no instance");
  }
  try {
    seat.Does("fills caches of its own");
    KEDataSync* sync = instance->GetSession()->GetDataSync();
    WatchSystems(*instance, *sync);
    const Json caches = ReadCaches(*sync->GetCache());
    tally.Count(caches["machines"].empty() ? "commutes in vain" : "commutes");
  } catch (const KELib::Throwable& error) {
    tally.Count(std::string("commutes that failed: ") + error.What());  // the session was lost
  }
  seat.Does("is in FreeServiceInstance (manager's mutex, waits for the sync thread)");
  manager.FreeServiceInstance(instance);
}

// Sets the lasting watches up. Others may find the connections taken or start the loop meanwhile:
// every failure is tried again until the watchdog has enough of it.
void WatchAll(Scene& scene, Seat& seat) {
  seat.Does("sets the lasting watches up");
  bool hasSystems = false, hasAuthorization = false;
  while (!hasAuthorization) {
    try {
      if (!hasSystems) hasSystems = WatchSystems(scene.instance, scene.sync) != nullptr;
      hasAuthorization = WatchAuthorization(scene.instance, scene.sync) != nullptr;
    } catch (const KELib::Throwable& error) {
      scene.tally.Count(std::string("failed: ") + error.What());
      Nap(5);
    }
  }
}

std::string StatusText(KEDataSync& sync) {
  KESyncStatus status;
  sync.GetStatus(status);
  return "loop " + std::string(status.loopRunning ? "runs" : "rests") + ", " +
         std::to_string(status.setsApplied) + " sets applied, version " + status.version.Cstr() +
         ", " + std::to_string(status.consecutiveFailures) +
         " failures in a row, last: " + status.lastFailure.Cstr();
}

// The mutex of the machines, which is the first that a reader wants.
void HoldForEver(Board& board, Scene& scene, Seat& seat) {
  KELib::KEString type(KE::Stub::ZORBEL_VMComputerSystemClass);
  const ShownGuard guard(seat, KE::Stub::ZORBEL_VMComputerSystemClass,
                         scene.sync.GetCache()->GetDataCache(type)->GetMutex());
  const std::list<Player> players = PlayersOf(board, scene);
  seat.Rests("holds a mutex for ever");
  for (;;) Nap(1000);
}

// Leads one instance after the other from its making to its end.
class Conductor {
 public:
  Conductor(Board& where, Daemon& counterpart, KEServiceInstManager& shared, Tally& counts)
      : board(where), daemon(counterpart), manager(shared), tally(counts) {
    KELib::Logging::GetDefaultLogger()->SetLevelByName("none");
  }

  // One life; which of the ways depends on the number.
  void Lead(unsigned number, bool holdsForEver) {
    Scene scene(Connect(number % 3 == 2), daemon.simulator.Config(), tally);
    WatchAll(scene, seat);
    if (holdsForEver) HoldForEver(board, scene, seat);
    std::list<Player> players = PlayersOf(board, scene);
    daemon.Rave();
    for (unsigned login = 0; login <= number % 3; ++login) {
      seat.Rests("lets the others play");
      Nap(700);
      if (login > 0) Relogin(scene, login == 2);
    }
    ExpectTruth(scene);
    End(scene, players, number);
  }

 private:
  // By the text itself, which gives the same instance again, or by falling back to it as the
  // default, which replaces the instance that was made so before.
  KEServiceInst& Connect(bool fallsBack) {
    seat.Does("connects (manager's mutex, network)");
    const auto byText = [&] {
      return manager.GetServiceInstance(config.c_str(), DEFAULT_CONFIG_CONTENT);
    };
    KEServiceInst* instance = fallsBack ? manager.GetServiceInstance("", config.c_str()) : byText();
    if (!instance) throw std::runtime_error("no service instance");
    if (!fallsBack && byText() != instance) {
      tally.Wrong("the same configuration gave another instance");
    }
    return *instance;
  }

  void Relogin(Scene& scene, bool lost) {
    seat.Does("waits until nobody holds a watch");
    const std::lock_guard<std::mutex> door(scene.door);
    const std::lock_guard<std::shared_mutex> alone(scene.watches);
    ++scene.disturbances;
    if (lost) daemon.simulator.Control("session-lost");
    seat.Does("is in Logout (session's mutex, network)");
    scene.session.Logout();
    seat.Does("is in Login (session's mutex, network)");
    KELib::KEString user("root"), password("secret");
    scene.session.Login(user, password);
    WatchAll(scene, seat);
    ++scene.disturbances;
    tally.Count(lost ? "sessions lost" : "sessions renewed");
  }

  // The readers go on meanwhile. What left while an update set was cut goes a minute later, or
  // sooner when the server has nothing more to say, so those who make it speak rest.
  void ExpectTruth(Scene& scene) {
    seat.Does("waits until nobody holds a watch");
    const std::lock_guard<std::mutex> door(scene.door);
    const std::lock_guard<std::shared_mutex> alone(scene.watches);
    struct Calm {
      explicit Calm(std::atomic<bool>& target) : flag(target) { flag = true; }
      ~Calm() { flag = false; }
      std::atomic<bool>& flag;
    } const calm(scene.calm);
    seat.Does("waits for the truth");
    daemon.Calm();
    const Json truth = daemon.simulator.Truth();
    const auto end = Clock::now() + TRUTH_LIMIT;
    for (Json is; (is = ReadCaches(*scene.sync.GetCache())) != truth; Nap(10)) {
      seat.Does("waits for the truth");
      if (Clock::now() < end) continue;
      return tally.Wrong(
          "the caches differ from the truth; " + StatusText(scene.sync) +
          "; what would make them true: " + Json::diff(is, truth).dump().substr(0, 2000));
    }
    tally.Count("times the caches equalled the truth");
    ExpectFeedsAgree(scene);
    seat.Does("compares what Followers told");
    const std::string wrong = CompareFollowers(scene, truth, Clock::now() + TRUTH_LIMIT);
    wrong.empty() ? tally.Count("times the Followers knew the truth") : tally.Wrong(wrong);
  }

  // A task may still come to its end.
  void ExpectFeedsAgree(Scene& scene) {
    const auto end = Clock::now() + TRUTH_LIMIT;
    for (std::string caches, slow, prompt; Clock::now() < end; Nap(10)) {
      seat.Does("compares what feeds told");
      caches = DumpCaches(*scene.sync.GetCache());
      slow = scene.slow.Dump();
      const std::lock_guard<std::mutex> use(scene.promptUse);
      prompt = scene.prompt.Dump();
      if (slow == caches && prompt == caches) return tally.Count("times the feeds agreed");
    }
    tally.Wrong("what feeds told differs from the caches");
  }

  void End(Scene& scene, std::list<Player>& players, unsigned number) {
    seat.Does("stops the loop under its users");
    if (number % 4 == 0) {
      const std::lock_guard<std::mutex> door(scene.door);
      const std::lock_guard<std::shared_mutex> alone(scene.watches);
      scene.park = true;
      scene.sync.RequestStop();
    }
    seat.Does("waits until everybody is parked");
    scene.park = true;
    players.clear();
    seat.Does("ends the Inventory (network)");
    EndInventory(scene);
    std::list<Player> blocked;  // end when the instance has been freed
    if (number % 2 == 1) blocked = BlockedCallersOf(board, scene);
    if (number % 3 == 2) {
      tally.Count("instances replaced");
      return manager.FreeServiceInstance(&Connect(true));
    }
    seat.Does("is in FreeServiceInstance (manager's mutex, waits for the sync thread)");
    manager.FreeServiceInstance(&scene.instance);
    tally.Count("instances freed");
  }

  Board& board;
  Daemon& daemon;
  KEServiceInstManager& manager;
  Tally& tally;
  const std::string config = daemon.simulator.Config("root", "secret");
  Seat seat{board, "conductor"};
};

struct Plan {
  std::chrono::seconds duration{10};
  std::chrono::milliseconds patience{30000};  // of the watchdog
  bool holdsForEver = false;                  // one actor takes the machines' mutex and keeps it
};

// Does not return when the watchdog finds somebody stuck.
void Play(const Plan& plan, Tally& tally) {
  Board board;
  {
    Daemon daemon(board, tally);
    const Watchdog watchdog(board, plan.patience);
    KEServiceInstManager& manager = *GetServiceManagerInstance();
    const Player commuter(board, "commuter", [&, config = daemon.simulator.Config()](Seat& seat) {
      Commute(manager, config, seat, tally);
      return true;
    });
    Conductor conductor(board, daemon, manager, tally);
    const auto end = Clock::now() + plan.duration;
    for (unsigned number = 0; number == 0 || Clock::now() < end; ++number) {
      conductor.Lead(number, plan.holdsForEver);
    }
  }
  tally.Count("longest step, " + board.LongestStep());
}

TEST(Stress, TheCachesStayTrueUnderManyThreads) {
  const auto begin = Clock::now();
  Tally tally;
  Plan plan;
  if (const char* chosen = std::getenv("KECPP_STRESS_SECONDS")) {
    plan.duration = std::chrono::seconds(std::atoi(chosen));
  }
  Play(plan, tally);
  FreeServiceManagerInstance();
  const std::chrono::duration<double> took = Clock::now() - begin;
  std::cout << "stress, " << took.count() << " s\n";
  for (const auto& [what, times] : tally.All()) std::cout << "  " << times << " " << what << '\n';
  for (const auto& [what, times] : tally.Wrongs()) ADD_FAILURE() << times << " times: " << what;
  for (const char* what :
       {"walks", "machines seen", "roles seen", "filters", "property methods", "tasks",
        "waits restarted", "commutes", "instances freed", "times the caches equalled the truth",
        "feeds", "times the feeds agreed", "Followers", "visits of the Inventory",
        "tasks of the Inventory", "Inventories", "times the Followers knew the truth"}) {
    EXPECT_TRUE(tally.All().count(what)) << "nothing came of the " << what;
  }
}

// The watchdog names who is stuck, who holds what that one waits for, and shows the library's own
// thread.
TEST(StressDeathTest, TheWatchdogTellsWhoHoldsWhat) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  Tally tally;
  Plan plan;
  plan.patience = std::chrono::seconds(3);
  plan.holdsForEver = true;
  EXPECT_DEATH(Play(plan, tally),
               "no progress of '.*"
               "'conductor' [^\n]*holds a mutex for ever[^\n]*; holds ZORBEL_VMComputerSystem\n.*"
               "'reader [^\n]*waits for ZORBEL_VMComputerSystem, held by 'conductor'\n.*"
               "thread [0-9]+:\n[^\n]*\\[0x");
}

}  // namespace
}  // namespace stress
