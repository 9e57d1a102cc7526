// SPDX-License-Identifier: MIT
#include "inventory/Keeper.h"

#include <algorithm>
#include <utility>

#include "inventory/BlockedSignals.h"
#include "inventory/Differences.h"

namespace kecpp {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds kLookEvery(1000);
constexpr milliseconds kFirstPause(1000);
constexpr milliseconds kLongestPause(30000);
constexpr milliseconds kCutEvery(20);  // one cut may come too early
constexpr milliseconds kStopLimit(5000);
constexpr milliseconds kRestPause(2000);  // between parts of a report
constexpr milliseconds kRestLimit(60000);
constexpr milliseconds kRestLookEvery(50);

std::chrono::system_clock::time_point Now() {
  return std::chrono::system_clock::now();
}

// What is in the caches afterwards stays as it is.
void StopSync(KE::Service::KEDataSync& sync) {
  const auto deadline = Clock::now() + kStopLimit;
  KE::Service::KESyncStatus status;
  do {
    if (auto* impl = dynamic_cast<KE::Service::KEDataSyncImpl*>(&sync)) impl->StopAtOnce();
    std::this_thread::sleep_for(kCutEvery);
    sync.GetStatus(status);
  } while (status.loopRunning && Clock::now() < deadline);
}

}  // namespace

// While it exists, Stop cuts the connection's attempt.
class Keeper::Opening {
 public:
  Opening(Keeper& owner, Connection& connection) : keeper(owner) {
    const std::lock_guard<std::mutex> lock(keeper.mutex);
    isAllowed = !keeper.ending;
    keeper.opening = &connection;
  }
  ~Opening() {
    const std::lock_guard<std::mutex> lock(keeper.mutex);
    keeper.opening = nullptr;
  }
  Opening(const Opening&) = delete;
  Opening& operator=(const Opening&) = delete;

  bool IsAllowed() const { return isAllowed; }

 private:
  Keeper& keeper;
  bool isAllowed;
};

Keeper::Keeper(Options asked) : options(std::move(asked)) {}

Keeper::~Keeper() {
  Close();
}

void Keeper::Close() {
  std::call_once(closed, [this] { Stop(); });
}

void Keeper::Start() {
  {
    const BlockedSignals blocked;  // inherited by the thread
    thread = std::thread([this] { Run(); });
  }
  if (options.connectInBackground) return;
  std::unique_lock<std::mutex> lock(mutex);
  const auto isDecided = [this] { return ended || status.connections > 0; };
  if (options.connectTimeout.count() <= 0) {
    changed.wait(lock, isDecided);
  } else if (!changed.wait_for(lock, std::min(options.connectTimeout, kLongestWait), isDecided)) {
    throw Error("", "not connected within " + std::to_string(options.connectTimeout.count()) +
                        " milliseconds");
  }
  if (firstFailure) std::rethrow_exception(firstFailure);
}

void Keeper::Stop() {
  if (!thread.joinable()) return;
  std::unique_lock<std::mutex> lock(mutex);
  ending = true;
  changed.notify_all();
  while (!ended) {
    if (opening != nullptr) opening->Cut();
    changed.wait_for(lock, kCutEvery);
  }
  if (current) current->Sync().RequestStop();  // lets RunTask go
  lock.unlock();
  thread.join();
  {
    const std::lock_guard<std::mutex> guard(switching);
    for (const auto& follower : LivingFollowers()) follower->Close();
  }
  SetState(Status::State::lost, "closed");
}

Connection::Use Keeper::Current() const {
  const std::lock_guard<std::mutex> lock(mutex);
  return current ? Connection::Use(*current) : Connection::Use();
}

Connection::Use Keeper::Known() const {
  const std::lock_guard<std::mutex> lock(mutex);
  Connection* known = current ? current.get() : opening;
  return known != nullptr ? Connection::Use(*known) : Connection::Use();
}

Status Keeper::GetStatus() const {
  std::unique_lock<std::mutex> lock(mutex);
  Status now = status;
  const Connection::Use connection = current ? Connection::Use(*current) : Connection::Use();
  lock.unlock();
  if (!connection) return now;
  KE::Service::KESyncStatus sync;
  connection->Sync().GetStatus(sync);
  now.updates = sync.setsApplied;
  now.version = sync.version.Cstr();
  now.failures = sync.consecutiveFailures;
  now.lastFailure = sync.lastFailure.Cstr();
  now.lastFailureTime += std::chrono::microseconds(sync.lastFailureTime);
  return now;
}

bool Keeper::WaitForStatus(const Status& seen, milliseconds limit) const {
  std::unique_lock<std::mutex> lock(mutex);
  return changed.wait_for(lock, std::min(limit, kLongestWait), [&] {
    return status.state != seen.state || status.connections != seen.connections ||
           status.reason != seen.reason;
  });
}

std::shared_ptr<Follower::Impl> Keeper::Follow() {
  auto made = std::make_shared<Follower::Impl>();
  const std::lock_guard<std::mutex> guard(switching);  // Stop closes under it, when it is ending
  if (IsEnding()) {
    made->Close();
    return made;
  }
  LivingFollowers();  // forgets the others
  followers.push_back(made);
  const Connection::Use connection = Current();
  if (connection) made->Begin(std::make_shared<Feed>(*connection.operator->()));
  return made;
}

// --- the thread ----------------------------------------------------------------------------------

void Keeper::Run() {
  if (Connect()) WatchOver();
  const std::lock_guard<std::mutex> lock(mutex);
  ended = true;
  changed.notify_all();
}

// False when there is none in the end.
bool Keeper::Connect() {
  for (milliseconds pause = kFirstPause; !TryToConnect();
       pause = std::min(2 * pause, kLongestPause)) {
    if (firstFailure || !Pause(pause)) return false;
  }
  return true;
}

// A connection that could not be made is logged out before its failure is reported.
bool Keeper::TryToConnect() {
  std::string reason;
  try {
    std::unique_ptr<Connection> made;
    Open(made);
    if (!made) return false;
    Install(std::move(made));
    return true;
  } catch (const std::exception& error) {
    reason = error.what();
    const std::lock_guard<std::mutex> lock(mutex);
    if (!current && !options.connectInBackground) firstFailure = std::current_exception();
  }
  if (GetStatus().connections == 0) {
    SetState(Status::State::connecting, reason);
  } else {
    SetState(Status::State::lost, lostBecause + "; " + reason);
  }
  return false;
}

// Makes none at the end. Throws Error and std::exception.
void Keeper::Open(std::unique_ptr<Connection>& made) try {
  auto connection = std::make_unique<Connection>(options);
  const Opening opened(*this, *connection);
  if (!opened.IsAllowed()) return;
  connection->Open();
  if (current) AwaitRest(*connection);
  made = std::move(connection);
} catch (const KELib::Throwable& error) {
  throw Error("", error.What());
}

// A daemon may split its first report over several answers, and does not say which is the last.
// What was known and has not come yet has gone only when no part brings any of it.
void Keeper::AwaitRest(const Connection& made) {
  std::vector<Change> missing = FindGone(*current, made);
  const auto begin = Clock::now();
  auto arrived = begin;
  while (!missing.empty() && Clock::now() < arrived + kRestPause &&
         Clock::now() < begin + kRestLimit && Pause(kRestLookEvery)) {
    const auto hasCome = [&](const Change& one) { return Holds(made, one.kind, one.key); };
    const auto still = std::remove_if(missing.begin(), missing.end(), hasCome);
    if (still != missing.end()) arrived = Clock::now();
    missing.erase(still, missing.end());
  }
}

void Keeper::WatchOver() {
  milliseconds pause = kLookEvery;
  while (Pause(pause)) {
    NoteUpdates();
    std::string reason;
    if (!current->IsLost(reason)) {
      if (GetStatus().state != Status::State::connected) SetState(Status::State::connected, "");
      pause = kLookEvery;
      continue;
    }
    const bool isNew = GetStatus().state == Status::State::connected;
    if (isNew) SetState(Status::State::lost, lostBecause = reason);
    if (TryToConnect()) {
      pause = kLookEvery;
    } else {
      pause = isNew ? kFirstPause : std::min(2 * pause, kLongestPause);
    }
  }
}

// The new connection takes the place of the present one, which is destroyed when its readers have
// left. Followers learn of it afterwards: a reader that looks up what it was given must find it.
// Their feeds are opened before: a reader may look at any time, and what changes later is in them.
void Keeper::Install(std::unique_ptr<Connection> made) {
  const std::lock_guard<std::mutex> guard(switching);
  const Followers all = LivingFollowers();
  const auto closeAll = [&] {
    for (const auto& follower : all) follower->Close();
  };
  Feeds feeds;
  try {
    feeds = OpenFeeds(*made, all.size());
  } catch (...) {
    closeAll();
  }
  {
    const std::lock_guard<std::mutex> lock(mutex);
    current.swap(made);
  }
  try {
    if (made) {
      Switch(*made, *current, all, feeds);
    } else {
      for (std::size_t i = 0; i < feeds.size(); ++i) all[i]->Begin(feeds[i]);
    }
  } catch (...) {
    closeAll();
  }
  const std::lock_guard<std::mutex> lock(mutex);
  SetStateNoLock(Status::State::connected, "");
  ++status.connections;
  status.lastUpdate = Now();
  status.hasAuthorization = current->HasAuthorization();
  status.authorizationFailure = current->AuthorizationFailure();
}

// Behind the first connection's the first content is passed over: it is compared instead.
Keeper::Feeds Keeper::OpenFeeds(Connection& connection, std::size_t count) const {
  Feeds feeds;
  std::vector<Change> passed;
  while (feeds.size() < count) {
    feeds.push_back(std::make_shared<Feed>(connection));
    while (current && feeds.back()->Take(passed, 1000) != 0) continue;
  }
  return feeds;
}

void Keeper::Switch(Connection& before, Connection& now, const Followers& all, const Feeds& feeds) {
  StopSync(before.Sync());
  if (feeds.empty()) return;
  const std::vector<Change> differences = FindDifferences(before, now);
  const auto isKnown = [&](Kind kind, const std::string& key) { return Holds(before, kind, key); };
  for (std::size_t i = 0; i < feeds.size(); ++i) all[i]->Switch(feeds[i], differences, isKnown);
}

Keeper::Followers Keeper::LivingFollowers() {
  Followers living;
  for (const auto& follower : followers) {
    if (auto alive = follower.lock(); alive && !alive->IsClosed()) living.push_back(alive);
  }
  followers.assign(living.begin(), living.end());
  return living;
}

void Keeper::SetState(Status::State state, const std::string& reason) {
  const std::lock_guard<std::mutex> lock(mutex);
  SetStateNoLock(state, reason);
}

void Keeper::SetStateNoLock(Status::State state, const std::string& reason) {
  if (status.state != state || status.connections == 0) {
    status.since = Now();
  }
  status.state = state;
  status.reason = reason;
  changed.notify_all();
}

void Keeper::NoteUpdates() {
  const unsigned long long updates = GetStatus().updates;
  if (updates == updatesSeen) return;
  updatesSeen = updates;
  const std::lock_guard<std::mutex> lock(mutex);
  status.lastUpdate = Now();
}

bool Keeper::IsEnding() const {
  const std::lock_guard<std::mutex> lock(mutex);
  return ending;
}

// False at the end.
bool Keeper::Pause(milliseconds limit) {
  std::unique_lock<std::mutex> lock(mutex);
  return !changed.wait_for(lock, limit, [this] { return ending; });
}

}  // namespace kecpp
