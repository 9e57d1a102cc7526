// SPDX-License-Identifier: MIT
//
// What the actors on one service instance share.
#ifndef KECPP_TESTS_STRESS_SCENE_H
#define KECPP_TESTS_STRESS_SCENE_H

#include <kecpp.h>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>

#include "stress/Board.h"
#include "stress/Tally.h"

namespace stress {

// Lets actors in, but not while it is closed; whoever closes it waits until all are out.
class Turnstile {
 public:
  class Stay {
   public:
    explicit Stay(Turnstile& turnstile);
    ~Stay();
    Stay(const Stay&) = delete;
    Stay& operator=(const Stay&) = delete;

   private:
    Turnstile& turnstile;
  };

  void Close();
  void Open();

 private:
  std::mutex mutex;
  std::condition_variable changed;
  unsigned inside = 0;
  bool closed = false;
};

struct Scene {
  Scene(KE::Service::KEServiceInst& made, Tally& counts)
      : instance(made), session(*made.GetSession()), sync(*session.GetDataSync()), tally(counts) {}

  KE::Service::KEServiceInst& instance;
  KE::Service::KESession& session;
  KE::Service::KEDataSync& sync;
  Tally& tally;

  std::atomic<bool> park{false};  // everybody ends
  // Odd while the session is out and what is under way may fail.
  std::atomic<unsigned> disturbances{0};
  // For those who hold the reference of a watch: it ends with the login.
  Turnstile watches;
};

using Reference = std::unique_ptr<KE::Stub::ManagedObjectReference>;
using Waiter = std::unique_ptr<KELib::KEWaiter>;

}  // namespace stress

#endif
