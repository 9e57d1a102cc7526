// SPDX-License-Identifier: MIT
#include "stress/Actors.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <fstream>
#include <string>

#include "agent/WatchList.h"
#include "stress/Walk.h"

namespace stress {
namespace {

using namespace KE::Service;
using KELib::KEString;
using KELib::KEVector;

constexpr const char* BUSY = "Unable to connect. Busy.";
constexpr const char* IN_TASK = "is in WaitForTask for a task without end";
constexpr const char* IN_CHANGE = "is in WaitForChange for a change that never comes";

void Nap(int milliseconds) {
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

void Read(Scene& scene, Seat& seat) {
  WalkSystems(*scene.sync.GetCache(), seat, scene.tally);
  WalkAuthorization(*scene.sync.GetCache(), seat, scene.tally);
  scene.tally.Count("walks");
}

// Sets up a watch, waits for its first data and stops it.
void WatchForAWhile(Scene& scene, Seat& seat, const char* rootName, KEVector<KEString>& list,
                    const char* counter) {
  seat.Rests("waits while the session is out");
  const Turnstile::Stay stay(scene.watches);
  seat.Does("asks for the root of a watch (instance's mutex)");
  const Reference root(scene.instance.GetReference(rootName));
  const Waiter waiter(KELib::CreateKEWaiter());
  seat.Does("is in SetupDataSync (filter-table mutex, network)");
  auto* watch = scene.sync.SetupDataSync(root.get(), list, waiter.get());
  seat.Does("waits for the first data of a watch");
  waiter->Wait(0);
  seat.Does("is in StopDataSync (filter-table mutex, network)");
  scene.sync.StopDataSync(watch);
  scene.tally.Count(counter);
}

void ChangeFilters(Scene& scene, Seat& seat) {
  KEVector<KEString> list;
  inventory::ListSystems(list);
  WatchForAWhile(scene, seat, PxaRootFolder, list, "filters");
}

// Named twice, the method makes a record of its own beside that of the lasting watch.
void ChangeMethods(Scene& scene, Seat& seat) {
  KEVector<KEString> list;
  for (const char* word :
       {MethodSep, "RetrieveAllPermissions", "RetrieveAllPermissions", CacheObjectSep,
        KE::Stub::Zorbel_RoleClass, KE::Stub::Zorbel_IdentityClass}) {
    list.Add(KEString(word));
  }
  WatchForAWhile(scene, seat, "authorizationManager", list, "property methods");
  Nap(20);
}

void StartTask(Scene& scene, Seat& seat, const char* outcome, KEString& response) {
  seat.Does("starts a task (network)");
  scene.instance.GetMethod()->Invoke(targetNamespace, "StartTask", "VirtualMachine", outcome,
                                     response);
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
  const bool mayFail = before % 2 == 1 || before != scene.disturbances || scene.park ||
                       status.lastFailureTime >= begin;
  if (!succeeded && !mayFail) scene.tally.Wrong("a task was not seen to succeed");
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

void RestartWaits(Scene& scene, Seat& seat) {
  seat.Does("restarts the pending wait (network)");
  dynamic_cast<KEDataSyncImpl&>(scene.sync).RestartDataSync();
  scene.tally.Count("waits restarted");
  Nap(50);
}

// A call may find both connections taken, and fail while the session is out or the instance ends.
void NoteFailure(Scene& scene, unsigned before, const char* step, const char* text) {
  const bool disturbed = before % 2 == 1 || before != scene.disturbances || scene.park;
  if (std::strcmp(text, BUSY) == 0 || disturbed) {
    scene.tally.Count(std::string("failed: ") + text);
  } else {
    scene.tally.Wrong(std::string("who ") + step + " got: " + text);
  }
}

// True when the thread sleeps at that step at several looks in a row.
bool IsAsleepAt(Board& board, const char* step) {
  for (int look = 0; look < 5; ++look, Nap(2)) {
    const std::vector<Posture> all = board.Look();
    const auto at = std::find_if(all.begin(), all.end(),
                                 [step](const Posture& posture) { return posture.step == step; });
    if (at == all.end()) return false;
    std::ifstream file("/proc/self/task/" + std::to_string(at->thread) + "/stat");
    std::string text;
    std::getline(file, text);
    const std::size_t name = text.rfind(')');
    if (name == std::string::npos || text.compare(name, 3, ") S") != 0) return false;
  }
  return true;
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

}  // namespace

Actors::Actors(Board& where, Scene& shared) : board(where), scene(shared) {
  for (const char* name : {"reader 1", "reader 2", "reader 3"}) Add(name, Read);
  Add("filter changer", ChangeFilters);
  Add("method changer", ChangeMethods);
  Add("task waiter 1", RunTask);
  Add("task waiter 2", RunTask);
  Add("change waiter", WaitForChanges);
  Add("wait restarter", RestartWaits);
}

Actors::~Actors() {
  Park();
}

void Actors::Add(const char* name, Step step) {
  threads.emplace_back([this, name, step] {
    Seat seat(board, name);
    while (!scene.park) {
      const unsigned before = scene.disturbances;
      try {
        step(scene, seat);
      } catch (const KELib::Throwable& error) {
        NoteFailure(scene, before, seat.Look().step, error.What());
        seat.Does("pauses after a failure");
        Nap(5);
      }
    }
  });
}

void Actors::Park() {
  scene.park = true;
  for (std::thread& thread : threads) thread.join();
  threads.clear();
}

BlockedCallers::BlockedCallers(Board& board, Scene& scene) {
  for (auto call : {WaitForEndlessTask, WaitForNoChange}) {
    threads.emplace_back([&board, &scene, call] {
      Seat seat(board, call == WaitForNoChange ? "endless change waiter" : "endless task waiter");
      try {
        call(scene, seat);
        scene.tally.Count("blocked callers let go");
      } catch (const KELib::Throwable& error) {
        scene.tally.Count(std::string("blocked callers let go: ") + error.What());
      }
    });
  }
  AwaitInside(board);
}

BlockedCallers::~BlockedCallers() {
  for (std::thread& thread : threads) thread.join();
}

void BlockedCallers::AwaitInside(Board& board) const {
  while (!IsAsleepAt(board, IN_TASK) || !IsAsleepAt(board, IN_CHANGE)) Nap(1);
}

}  // namespace stress
