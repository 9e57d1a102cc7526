// SPDX-License-Identifier: MIT
#include "stress/Stress.h"

#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <thread>

#include "agent/WatchList.h"
#include "stress/Actors.h"
#include "stress/Daemon.h"
#include "stress/Scene.h"
#include "stress/Watchdog.h"
#include "support/ReadCaches.h"

namespace stress {
namespace {

using namespace KE::Service;
using Clock = std::chrono::steady_clock;
using nlohmann::json;

constexpr std::chrono::seconds TRUTH_LIMIT(30);

void Nap(int milliseconds) {
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

// Sets the lasting watches up. Others may find the connections taken or start the loop meanwhile:
// every failure is tried again until the watchdog has enough of it.
void Watch(Scene& scene, const char* rootName, void (*fill)(KELib::KEVector<KELib::KEString>&)) {
  for (;;) {
    try {
      const Reference root(scene.instance.GetReference(rootName));
      KELib::KEVector<KELib::KEString> list;
      fill(list);
      scene.sync.SetupDataSync(root.get(), list, nullptr);
      return;
    } catch (const KELib::Throwable& error) {
      scene.tally.Count(std::string("failed: ") + error.What());
      Nap(5);
    }
  }
}

void WatchAll(Scene& scene, Seat& seat) {
  seat.Does("sets the lasting watches up");
  Watch(scene, PxaRootFolder, inventory::ListSystems);
  Watch(scene, "authorizationManager", inventory::ListAuthorization);
}

std::string StatusText(KEDataSync& sync) {
  KESyncStatus status;
  sync.GetStatus(status);
  return "loop " + std::string(status.loopRunning ? "runs" : "rests") + ", " +
         std::to_string(status.setsApplied) + " sets applied, version " + status.version.Cstr() +
         ", " + std::to_string(status.consecutiveFailures) +
         " failures in a row, last: " + status.lastFailure.Cstr();
}

// What the one list holds and the other does not, by key.
std::string Beyond(const json& list, const json& other, const char* key) {
  std::string names;
  for (const json& item : list) {
    const bool isThere = std::any_of(other.begin(), other.end(), [&](const json& candidate) {
      return candidate[key] == item[key];
    });
    if (!isThere) names += " " + item[key].get<std::string>();
  }
  return names;
}

// The beginning of what is wrong, for people.
std::string Difference(const json& caches, const json& truth) {
  std::string text = "machines too many:" + Beyond(caches["machines"], truth["machines"], "Name") +
                     "; missing:" + Beyond(truth["machines"], caches["machines"], "Name") +
                     "; what would make them true: " + json::diff(caches, truth).dump();
  return text.substr(0, 2000);
}

// A service instance of its own, beside the one that is played with: it comes and goes all the
// time.
class Commuter {
 public:
  Commuter(Board& board, KEServiceInstManager& shared, Tally& counts, const std::string& document)
      : manager(shared), tally(counts), config(document), thread([this, &board] { Run(board); }) {}
  ~Commuter() {
    stop = true;
    thread.join();
  }
  Commuter(const Commuter&) = delete;
  Commuter& operator=(const Commuter&) = delete;

 private:
  void Run(Board& board) {
    Seat seat(board, "commuter");
    while (!stop) Commute(seat);
  }

  void Commute(Seat& seat) {
    seat.Does("connects (manager's mutex, network)");
    KEServiceInst* instance = manager.GetServiceInstance(config.c_str(), DEFAULT_CONFIG_CONTENT);
    if (!instance) return tally.Wrong("the commuter got no instance");
    try {
      seat.Does("fills caches of its own");
      KEDataSync* sync = instance->GetSession()->GetDataSync();
      const Reference root(instance->GetReference(PxaRootFolder));
      KELib::KEVector<KELib::KEString> list;
      inventory::ListSystems(list);
      sync->SetupDataSync(root.get(), list, nullptr);
      const json caches = ReadCaches(*sync->GetCache());
      tally.Count(caches["machines"].empty() ? "commutes in vain" : "commutes");
    } catch (const KELib::Throwable& error) {
      tally.Count(std::string("commutes that failed: ") + error.What());  // the session was lost
    }
    seat.Does("is in FreeServiceInstance (manager's mutex, waits for the sync thread)");
    manager.FreeServiceInstance(instance);
  }

  KEServiceInstManager& manager;
  Tally& tally;
  const std::string config;
  std::atomic<bool> stop{false};
  std::thread thread;
};

class Conductor {
 public:
  Conductor(Board& where, Daemon& counterpart, KEServiceInstManager& shared, Tally& counts)
      : board(where),
        daemon(counterpart),
        tally(counts),
        manager(shared),
        config(daemon.Simulated().Config("root", "secret")),
        seat(board, "conductor") {
    KELib::Logging::GetDefaultLogger()->SetLevelByName("none");
  }

  // One instance from its making to its end; which of the ways depends on the number.
  void Life(unsigned number, bool holdsForEver);

 private:
  KEServiceInst& Connect(bool fallsBack);
  void Relogin(Scene& scene, bool lost);
  void ExpectTruth(Scene& scene);
  void End(Scene& scene, Actors& actors, unsigned number);

  Board& board;
  Daemon& daemon;
  Tally& tally;
  KEServiceInstManager& manager;
  const std::string config;
  Seat seat;
};

// By the text itself, which gives the same instance again, or by falling back to it as the default,
// which replaces the instance that was made so before.
KEServiceInst& Conductor::Connect(bool fallsBack) {
  seat.Does("connects (manager's mutex, network)");
  KEServiceInst* instance =
      fallsBack ? manager.GetServiceInstance("", config.c_str())
                : manager.GetServiceInstance(config.c_str(), DEFAULT_CONFIG_CONTENT);
  if (!instance) throw std::runtime_error("no service instance");
  if (!fallsBack &&
      manager.GetServiceInstance(config.c_str(), DEFAULT_CONFIG_CONTENT) != instance) {
    tally.Wrong("the same configuration gave another instance");
  }
  return *instance;
}

void Conductor::Relogin(Scene& scene, bool lost) {
  seat.Does("waits until nobody holds a watch");
  scene.watches.Close();
  ++scene.disturbances;
  if (lost) daemon.LoseSessions();
  seat.Does("is in Logout (session's mutex, network)");
  scene.session.Logout();
  seat.Does("is in Login (session's mutex, network)");
  KELib::KEString user("root"), password("secret");
  scene.session.Login(user, password);
  WatchAll(scene, seat);
  ++scene.disturbances;
  scene.watches.Open();
  tally.Count(lost ? "sessions lost" : "sessions renewed");
}

// The actors go on meanwhile.
void Conductor::ExpectTruth(Scene& scene) {
  seat.Does("waits for the truth");
  daemon.Calm();
  const json truth = daemon.Truth();
  const auto end = Clock::now() + TRUTH_LIMIT;
  while (ReadCaches(*scene.sync.GetCache()) != truth) {
    seat.Does("waits for the truth");
    if (Clock::now() > end) {
      return tally.Wrong("the caches differ from the truth; " + StatusText(scene.sync) + "; " +
                         Difference(ReadCaches(*scene.sync.GetCache()), truth));
    }
    Nap(10);
  }
  tally.Count("times the caches equalled the truth");
}

void Conductor::End(Scene& scene, Actors& actors, unsigned number) {
  seat.Does("stops the loop under its users");
  if (number % 4 == 0) {
    scene.watches.Close();
    scene.park = true;
    scene.sync.RequestStop();
    scene.watches.Open();
  }
  seat.Does("waits until everybody is parked");
  actors.Park();
  std::unique_ptr<BlockedCallers> blocked;
  if (number % 2 == 1) blocked = std::make_unique<BlockedCallers>(board, scene);
  if (number % 3 == 2) {
    tally.Count("instances replaced");
    return manager.FreeServiceInstance(&Connect(true));
  }
  seat.Does("is in FreeServiceInstance (manager's mutex, waits for the sync thread)");
  manager.FreeServiceInstance(&scene.instance);
  tally.Count("instances freed");
}

void HoldForEver(Scene& scene, Seat& seat) {
  KELib::KEString type(KE::Stub::ZORBEL_VMComputerSystemClass);
  const ShownGuard guard(seat, KE::Stub::ZORBEL_VMComputerSystemClass,
                         scene.sync.GetCache()->GetDataCache(type)->GetMutex());
  seat.Rests("holds a mutex for ever");
  for (;;) Nap(1000);
}

void Conductor::Life(unsigned number, bool holdsForEver) {
  Scene scene(Connect(number % 3 == 2), tally);
  WatchAll(scene, seat);
  Actors actors(board, scene);
  daemon.Rave();
  if (holdsForEver) HoldForEver(scene, seat);
  for (unsigned login = 0; login <= number % 3; ++login) {
    seat.Rests("lets the others play");
    Nap(700);
    if (login > 0) Relogin(scene, login == 2);
  }
  ExpectTruth(scene);
  End(scene, actors, number);
}

void PlayOn(Board& board, const Plan& plan, Tally& tally) {
  Daemon daemon(board, tally);
  const Watchdog watchdog(board, plan.patience);
  KEServiceInstManager& manager = *GetServiceManagerInstance();
  const Commuter commuter(board, manager, tally, daemon.Simulated().Config());
  Conductor conductor(board, daemon, manager, tally);
  const auto end = Clock::now() + plan.duration;
  for (unsigned number = 0; number == 0 || Clock::now() < end; ++number) {
    conductor.Life(number, plan.holdsForEver);
  }
}

}  // namespace

void Play(const Plan& plan, Tally& tally) {
  Board board;
  PlayOn(board, plan, tally);
  tally.Count("longest step, " + board.LongestStep());
}

}  // namespace stress
