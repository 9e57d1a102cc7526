// SPDX-License-Identifier: MIT
//
// Keeps a connection: makes it, watches it, and puts another in its place when it is lost. The lost
// one stays, to be read, until then; followers learn only what differs.
//
// Thread safety: any thread; the destructor alone. Locks: `switching`, then a follower's,
//   then `mutex`. Of these only `switching` is held while the network is used, to stop a lost
//   connection.
#ifndef KECPP_INVENTORY_KEEPER_H
#define KECPP_INVENTORY_KEEPER_H

#include <kecpp/inventory.h>

#include <chrono>
#include <condition_variable>
#include <exception>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "inventory/Connection.h"
#include "inventory/Feed.h"
#include "inventory/FollowerImpl.h"

namespace kecpp {

class Keeper {
 public:
  explicit Keeper(Options options);
  ~Keeper();
  Keeper(const Keeper&) = delete;
  Keeper& operator=(const Keeper&) = delete;

  // Starts the thread and, unless it connects in the background, waits for the first data. Throws
  // Error.
  void Start();

  // The connection that there is, of nothing before the first.
  Connection::Use Current() const;

  // The same, but before the first one the one that is being opened.
  Connection::Use Known() const;

  Status GetStatus() const;
  bool WaitForStatus(const Status& seen, std::chrono::milliseconds limit) const;

  std::shared_ptr<Follower::Impl> Follow();

  // Ends the thread and every wait.
  void Close();

 private:
  using Followers = std::vector<std::shared_ptr<Follower::Impl>>;
  using Feeds = std::vector<std::shared_ptr<Feed>>;  // of all followers, or of none
  class Opening;

  void Stop();
  void Run();
  bool Connect();
  bool TryToConnect();
  void Open(std::unique_ptr<Connection>& made);
  void AwaitRest(const Connection& made);
  void WatchOver();
  void Install(std::unique_ptr<Connection> made);
  Feeds OpenFeeds(Connection& connection, std::size_t count) const;
  void Switch(Connection& before, Connection& now, const Followers& all, const Feeds& feeds);
  Followers LivingFollowers();
  void SetState(Status::State state, const std::string& reason);
  void SetStateNoLock(Status::State state, const std::string& reason);
  void NoteUpdates();
  bool IsEnding() const;
  bool Pause(std::chrono::milliseconds limit);

  const Options options;
  std::thread thread;
  std::once_flag closed;
  unsigned long long updatesSeen = 0;  // by the thread, like the next
  std::string lostBecause;

  std::mutex switching;  // no follower begins while connections are exchanged
  std::vector<std::weak_ptr<Follower::Impl>> followers;  // guarded by `switching`

  mutable std::mutex mutex;
  mutable std::condition_variable changed;
  std::unique_ptr<Connection> current;  // guarded by `mutex`, like all below; set by the thread
  Connection* opening = nullptr;        // what Stop has to cut
  Status status;                        // without what its connection knows
  std::exception_ptr firstFailure;      // of the first attempt, unless it is made in the background
  bool ending = false;
  bool ended = false;  // the thread has nothing more to do
};

}  // namespace kecpp

#endif
