// SPDX-License-Identifier: MIT
#include "tools/agent/indications/ChangeWatch.h"

#include <chrono>
#include <exception>
#include <iostream>
#include <utility>

namespace tools::agent {
namespace {

constexpr std::chrono::milliseconds SLICE(200);  // new subscriptions and the end wake nobody
constexpr std::chrono::seconds REST(10);
constexpr std::chrono::seconds PATIENCE(10);
constexpr std::chrono::seconds PAUSE(1);  // after a failure

}  // namespace

ChangeWatch::ChangeWatch(const kecpp::Inventory& watched, std::string hostName,
                         std::function<void()> lookAround)
    : inventory(watched),
      look(std::move(lookAround)),
      events(watched, std::move(hostName)),
      wanted(std::make_shared<const Plan>()),
      adopted(wanted),
      thread([this] { Run(); }) {}

ChangeWatch::~ChangeWatch() {
  End();
  thread.join();
}

void ChangeWatch::End() {
  const std::lock_guard<std::mutex> lock(mutex);
  ended = true;
  wake.notify_all();
}

void ChangeWatch::Follow(std::shared_ptr<const Plan> plan) {
  const std::lock_guard<std::mutex> lock(mutex);
  wanted = std::move(plan);
  wake.notify_all();
}

void ChangeWatch::Await() const {
  const bool isConnected = inventory.State().connections > 0;
  if (!isConnected) return;
  std::unique_lock<std::mutex> lock(mutex);
  wake.wait_for(lock, PATIENCE, [this] { return ended || adopted == wanted; });
}

bool ChangeWatch::HasEnded() const {
  const std::lock_guard<std::mutex> lock(mutex);
  return ended;
}

void ChangeWatch::Run() {
  while (AwaitPlan() && AwaitConnection()) {
    try {
      FollowChanges();
    } catch (const std::exception& error) {
      NoteMissed(error.what());
      std::unique_lock<std::mutex> lock(mutex);
      wake.wait_for(lock, PAUSE, [this] { return ended; });
    }
  }
}

// False at the end.
bool ChangeWatch::AwaitPlan() {
  std::unique_lock<std::mutex> lock(mutex);
  while (!ended && wanted->IsEmpty()) {
    adopted = wanted;
    wake.notify_all();
    if (wake.wait_for(lock, REST, [this] { return ended || adopted != wanted; })) continue;
    lock.unlock();
    look();
    lock.lock();
  }
  return !ended;
}

// The first connection, until everything is read; later ones are the inventory's matter.
bool ChangeWatch::AwaitConnection() {
  for (;;) {
    if (HasEnded()) return false;
    const kecpp::Status status = inventory.State();
    if (status.connections > 0) return true;
    inventory.WaitForState(status, SLICE);
    look();
  }
}

void ChangeWatch::FollowChanges() {
  events.Reset();
  kecpp::Follower changes = inventory.Follow();
  while (!changes.Next().empty()) {
  }
  while (!HasEnded()) {
    if (changes.Closed()) return NoteMissed("the feed of changes was closed");
    if (!Adopt(changes)) return;
    changes.Wait(SLICE);
    Drain(changes);
    look();
  }
}

void ChangeWatch::Drain(kecpp::Follower& changes) {
  for (auto some = changes.Next(); !some.empty() && !HasEnded(); some = changes.Next()) {
    for (const kecpp::Change& change : some) events.Take(change);
  }
}

// False when nobody wants anything any more. What has changed so far is for those who were there.
bool ChangeWatch::Adopt(kecpp::Follower& changes) {
  std::unique_lock<std::mutex> lock(mutex);
  const auto next = wanted;
  if (next == events.CurrentPlan()) return true;
  lock.unlock();
  Drain(changes);
  events.Use(next);
  lock.lock();
  adopted = next;
  wake.notify_all();
  return !next->IsEmpty();
}

void ChangeWatch::NoteMissed(const std::string& why) {
  std::cerr << "kecpp-agent: indications may be missing: " + why + '\n';
  for (const Plan::Wish& wish : events.CurrentPlan()->All()) wish.delivery->Skip();
}

}  // namespace tools::agent
