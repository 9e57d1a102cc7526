// SPDX-License-Identifier: MIT
#include <cstring>
#include <memory>

#include "simulator/driver/ProcessSample.h"
#include "stress/Scene.h"
#include "support/Watches.h"

namespace stress {
namespace {

using namespace KE::Service;
using KELib::KEString;
using KELib::KEVector;
using Waiter = std::unique_ptr<KELib::KEWaiter>;

constexpr const char* BUSY = "Unable to connect. Busy.";
constexpr const char* IN_TASK = "is in WaitForTask for a task without end";
constexpr const char* IN_CHANGE = "is in WaitForChange for a change that never comes";

void Read(Scene& scene, Seat& seat) {
  WalkSystems(*scene.sync.GetCache(), seat, scene.tally);
  WalkAuthorization(*scene.sync.GetCache(), seat, scene.tally);
  scene.tally.Count("walks");
}

// Sets up a watch, waits for its first data and stops it.
template <typename Fill>
void WatchForAWhile(Scene& scene, Seat& seat, const char* rootName, Fill fill,
                    const char* counter) {
  seat.Rests("waits while the session is out");
  std::unique_lock<std::mutex> door(scene.door);
  const std::shared_lock<std::shared_mutex> stay(scene.watches);
  door.unlock();
  const Waiter waiter(KELib::CreateKEWaiter());
  seat.Does("is in SetupDataSync (instance's mutex, filter-table mutex, network)");
  auto* watch = Watch(scene.instance, scene.sync, rootName, fill, waiter.get());
  seat.Does("waits for the first data of a watch");
  waiter->Wait(2000);  // while changes pour in it may take a minute to know what has gone
  seat.Does("is in StopDataSync (filter-table mutex, network)");
  scene.sync.StopDataSync(watch);
  scene.tally.Count(counter);
}

void ChangeFilters(Scene& scene, Seat& seat) {
  WatchForAWhile(scene, seat, PxaRootFolder, kecpp::ListSystems, "filters");
}

// Named twice, the method makes a record of its own beside that of the lasting watch.
void ChangeMethods(Scene& scene, Seat& seat) {
  const auto fill = [](KEVector<KEString>& list) {
    for (const char* word :
         {MethodSep, "RetrieveAllPermissions", "RetrieveAllPermissions", CacheObjectSep,
          KE::Stub::Zorbel_RoleClass, KE::Stub::Zorbel_IdentityClass}) {
      list.Add(KEString(word));
    }
  };
  WatchForAWhile(scene, seat, "authorizationManager", fill, "property methods");
  Nap(20);
}

void StartTask(Scene& scene, Seat& seat, const char* outcome, KEString& response) {
  seat.Does("starts a task (network)");
  scene.instance.GetMethod()->Invoke(targetNamespace, "StartTask", "VirtualMachine", outcome,
                                     response);
}

// What began when so many disturbances were over may fail.
bool IsDisturbed(const Scene& scene, unsigned before) {
  return before % 2 == 1 || before != scene.disturbances || scene.park;
}

void RunTask(Scene& scene, Seat& seat) {
  const unsigned before = scene.disturbances;
  const long long begin = KELib::GetTime();
  KEString response;
  StartTask(scene, seat, "success", response);
  const Waiter waiter(KELib::CreateKEWaiter());
  seat.Does("is in WaitForTask (filter-table mutex, network)");
  const bool succeeded = scene.sync.WaitForTask(response, waiter.get());
  scene.tally.Count(succeeded ? "tasks" : "tasks let go");
  KESyncStatus status;
  scene.sync.GetStatus(status);  // failures in a row let go
  if (!succeeded && !IsDisturbed(scene, before) && status.lastFailureTime < begin) {
    scene.tally.Wrong("a task was not seen to succeed");
  }
}

void WaitForChanges(Scene& scene, Seat& seat) {
  unsigned long long seen = 0;
  for (int i = 0; i < 100 && !scene.park; ++i) {
    seat.Does("is in WaitForChange");
    if (!scene.sync.WaitForChange(seen, 50)) Nap(1);
    KESyncStatus status;
    seat.Does("is in GetStatus");
    scene.sync.GetStatus(status);
    if (seen > status.setsApplied) scene.tally.Wrong("WaitForChange saw more than there was");
  }
  scene.tally.Count("changes waited for", 100);
}

void FollowFeed(Scene& scene, Seat& seat) {
  seat.Does("takes what a feed gives");
  const std::lock_guard<std::mutex> use(scene.promptUse);
  if (scene.prompt.Follow(5, 20) < 0) Nap(1);
  scene.tally.Count("times the lasting feed was taken from");
}

// A feed that comes and goes, in the middle of everything.
void OpenFeed(Scene& scene, Seat& seat) {
  seat.Does("opens a feed");
  FeedMirror mirror(scene.sync);
  for (int i = 1; i < 40 && !scene.park; ++i) {
    seat.Does("takes what a feed gives");
    if (mirror.Follow(i, i % 3 * 10) < 0) Nap(1);
  }
  if (!mirror.Wrong().empty()) scene.tally.Wrong("a feed gave what does not fit");
  scene.tally.Count("feeds");
}

void RestartWaits(Scene& scene, Seat& seat) {
  seat.Does("restarts the pending wait (network)");
  dynamic_cast<KEDataSyncImpl&>(scene.sync).RestartDataSync();
  scene.tally.Count("waits restarted");
  Nap(50);
}

using Step = void (*)(Scene&, Seat&);
constexpr struct {
  const char* name;
  Step step;
} ACTORS[] = {{"reader 1", Read},
              {"reader 2", Read},
              {"reader 3", Read},
              {"filter changer", ChangeFilters},
              {"method changer", ChangeMethods},
              {"task waiter 1", RunTask},
              {"task waiter 2", RunTask},
              {"change waiter", WaitForChanges},
              {"feed reader", FollowFeed},
              {"feed opener 1", OpenFeed},
              {"feed opener 2", OpenFeed},
              {"wait restarter", RestartWaits},
              {"follower", FollowInventory},
              {"follower opener 1", OpenFollower},
              {"follower opener 2", OpenFollower},
              {"Inventory's reader 1", ReadInventory},
              {"Inventory's reader 2", ReadInventory},
              {"Inventory's caller", CallInventory},
              {"Inventory opener 1", OpenInventory},
              {"Inventory opener 2", OpenInventory}};

// A call may find both connections taken, and fail while the session is out or the instance ends.
bool Act(Scene& scene, Seat& seat, Step step) {
  if (scene.calm && (step == RunTask || step == RestartWaits || step == CallInventory)) {
    seat.Rests("rests while the truth is looked for");
    Nap(5);
    return !scene.park;
  }
  const unsigned before = scene.disturbances;
  try {
    step(scene, seat);
  } catch (const KELib::Throwable& error) {
    if (std::strcmp(error.What(), BUSY) == 0 || IsDisturbed(scene, before)) {
      scene.tally.Count(std::string("failed: ") + error.What());
    } else {
      scene.tally.Wrong(std::string("who ") + seat.Step() + " got: " + error.What());
    }
    seat.Does("pauses after a failure");
    Nap(5);
  }
  return !scene.park;
}

void WaitForEndlessTask(Scene& scene, Seat& seat) {
  KEString response;
  while (response.Empty()) {
    try {
      StartTask(scene, seat, "hang", response);
    } catch (const KELib::Throwable&) {
      Nap(5);  // both connections are taken
    }
  }
  const Waiter waiter(KELib::CreateKEWaiter());
  seat.Rests(IN_TASK);
  if (scene.sync.WaitForTask(response, waiter.get())) scene.tally.Wrong("an endless task ended");
}

void WaitForNoChange(Scene& scene, Seat& seat) {
  unsigned long long seen = ~0ULL;
  seat.Rests(IN_CHANGE);
  if (scene.sync.WaitForChange(seen, 0)) scene.tally.Wrong("a change came that nobody made");
}

// True when a thread sleeps at that step at several looks in a row.
bool IsAsleepAt(Board& board, const char* step) {
  for (int look = 0; look < 5; ++look, Nap(2)) {
    const std::vector<Posture> all = board.Look();
    const bool sleeps = std::any_of(all.begin(), all.end(), [step](const Posture& posture) {
      const std::string folder = "/proc/self/task/" + std::to_string(posture.thread);
      return posture.step == step && SampleOf(folder).state == 'S';
    });
    if (!sleeps) return false;
  }
  return true;
}

}  // namespace

std::list<Player> PlayersOf(Board& board, Scene& scene) {
  std::list<Player> players;
  for (const auto& [name, step] : ACTORS) {
    players.emplace_back(board, name,
                         [&scene, action = step](Seat& seat) { return Act(scene, seat, action); });
  }
  return players;
}

std::list<Player> BlockedCallersOf(Board& board, Scene& scene) {
  std::list<Player> players;
  for (const Step call : {WaitForEndlessTask, WaitForNoChange}) {
    players.emplace_back(board, "blocked caller", [&scene, call](Seat& seat) {
      std::string how;
      try {
        call(scene, seat);
      } catch (const KELib::Throwable& error) {
        how = std::string(": ") + error.What();
      }
      scene.tally.Count("blocked callers let go" + how);
      return false;
    });
  }
  while (!IsAsleepAt(board, IN_TASK) || !IsAsleepAt(board, IN_CHANGE)) Nap(1);
  return players;
}

}  // namespace stress
