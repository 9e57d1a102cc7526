// SPDX-License-Identifier: MIT
//
// What the actors on one service instance share, and who they are.
#ifndef KECPP_TESTS_STRESS_SCENE_H
#define KECPP_TESTS_STRESS_SCENE_H

#include <kecpp.h>
#include <kecpp/inventory.h>

#include <atomic>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string>

#include "endurance/Replay.h"
#include "stress/Board.h"
#include "support/FeedMirror.h"

namespace stress {

// What the actors did and found. Thread safety: any thread.
class Tally {
 public:
  using Counts = std::map<std::string, unsigned long>;

  void Count(const std::string& what, unsigned long times = 1) { Add(counts, what, times); }
  void Wrong(const std::string& what) { Add(wrongs, what, 1); }  // something that must not be

  // Once all actors have ended.
  const Counts& All() const { return counts; }
  const Counts& Wrongs() const { return wrongs; }

 private:
  void Add(Counts& where, const std::string& what, unsigned long times) {
    const std::lock_guard<std::mutex> lock(mutex);
    where[what] += times;
  }

  std::mutex mutex;
  Counts counts, wrongs;
};

// An Inventory of the same daemon, and what Followers make of it.
struct Interface {
  explicit Interface(const std::string& config)
      : inventory(std::make_unique<kecpp::Inventory>(kecpp::Options{config})) {}

  std::unique_ptr<kecpp::Inventory> inventory;
  // Kept through every new connection. One takes nothing until the truth is looked for.
  kecpp::Follower slow = inventory->Follow(), prompt = inventory->Follow();
  endurance::Replay slowReplay{*inventory}, promptReplay{*inventory};
  std::mutex promptUse;  // guards `prompt` and its replay
};

struct Scene {
  Scene(KE::Service::KEServiceInst& made, const std::string& text, Tally& counts)
      : instance(made),
        session(*made.GetSession()),
        sync(*session.GetDataSync()),
        tally(counts),
        config(text),
        interface(text) {}

  KE::Service::KEServiceInst& instance;
  KE::Service::KESession& session;
  KE::Service::KEDataSync& sync;
  Tally& tally;
  const std::string config;
  Interface interface;
  std::atomic<int> inventories{0};  // made beside it

  // Kept through every login by feeds. One takes nothing until the truth is looked for.
  FeedMirror slow{sync}, prompt{sync};
  std::mutex promptUse;  // guards `prompt`

  std::atomic<bool> park{false};  // everybody ends
  // Nobody calls the server, so that the library may take its silence for the end of a report.
  std::atomic<bool> calm{false};
  // Odd while the session is out and what is under way may fail.
  std::atomic<unsigned> disturbances{0};

  // Those who hold the reference of a watch share it: the reference ends with the login. Everybody
  // enters through the door, so that who wants nobody inside does not wait for ever.
  std::mutex door;
  std::shared_mutex watches;
};

// One step of those who use the Inventory.
void FollowInventory(Scene& scene, Seat& seat);  // the lasting Follower
void OpenFollower(Scene& scene,
                  Seat& seat);  // one that comes and goes, in the middle of everything
void ReadInventory(Scene& scene, Seat& seat);
void CallInventory(Scene& scene, Seat& seat);
void OpenInventory(Scene& scene, Seat& seat);  // another one, which ends at any moment

// What is wrong with the lasting Followers, if they do not come to know the truth; empty otherwise.
std::string CompareFollowers(Scene& scene, const endurance::Json& truth, Clock::time_point limit);

// Ends the Inventory while a thread waits for its changes.
void EndInventory(Scene& scene);

// Readers, watchers who come and go, task waiters, one that waits for changes and one that restarts
// the pending wait, until the scene is parked.
std::list<Player> PlayersOf(Board& board, Scene& scene);

// Two threads inside calls that only a stop ends: a task that never does and a change that never
// comes. On return both are inside.
std::list<Player> BlockedCallersOf(Board& board, Scene& scene);

// Walk through the caches as a careful reader does, and check on the way what must hold at every
// moment: each object whole, both ends of each link agreeing, each key found again.
void WalkSystems(KE::Instance::KETypeCache& cache, Seat& seat, Tally& tally);
void WalkAuthorization(KE::Instance::KETypeCache& cache, Seat& seat, Tally& tally);

}  // namespace stress

#endif
