// SPDX-License-Identifier: MIT
//
// The thread that follows the inventory's changes while there are subscriptions.
//
// What is there when it begins is no news, and neither is what a lost connection has not changed.
//
// Thread safety: any thread.
#ifndef KECPP_TOOLS_AGENT_INDICATIONS_CHANGEWATCH_H
#define KECPP_TOOLS_AGENT_INDICATIONS_CHANGEWATCH_H

#include <kecpp/inventory.h>

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "tools/agent/indications/EventSource.h"

namespace tools::agent {

class ChangeWatch {
 public:
  // `lookAround` is called on the thread, holding nothing, at least each ten seconds. The inventory
  // outlives the object.
  ChangeWatch(const kecpp::Inventory& inventory, std::string hostName,
              std::function<void()> lookAround);
  ~ChangeWatch();
  ChangeWatch(const ChangeWatch&) = delete;
  ChangeWatch& operator=(const ChangeWatch&) = delete;

  // Lets Await go, and the thread end as soon as it can.
  void End();

  // Works for these subscriptions as soon as it can.
  void Follow(std::shared_ptr<const Plan> plan);

  // Waits until it works for the last ones that it was given: what changes from then on is told.
  // Not while the daemon was never connected, and ten seconds at most.
  void Await() const;

 private:
  void Run();
  bool AwaitPlan();
  bool AwaitConnection();
  void FollowChanges();
  bool Adopt(kecpp::Follower& changes);
  void Drain(kecpp::Follower& changes);
  void NoteMissed(const std::string& why);
  bool HasEnded() const;

  const kecpp::Inventory& inventory;
  const std::function<void()> look;
  EventSource events;  // the thread's
  mutable std::mutex mutex;
  mutable std::condition_variable wake;
  std::shared_ptr<const Plan> wanted;  // guarded by `mutex`, like all below
  std::shared_ptr<const Plan> adopted;
  bool ended = false;
  std::thread thread;
};

}  // namespace tools::agent

#endif
