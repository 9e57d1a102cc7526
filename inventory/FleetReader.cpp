// SPDX-License-Identifier: MIT
#include "inventory/FleetReader.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "foundation/Logger.h"
#include "inventory/BlockedSignals.h"
#include "inventory/FollowerImpl.h"

namespace kecpp {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds kSilence(5000);  // of a watch, before another member is asked
constexpr milliseconds kFirstPause(100);
constexpr milliseconds kLongestPause(5000);
constexpr milliseconds kSoundWatch(1000);  // one that lasted so long was none of a row of failures
constexpr std::size_t kPiece = 256;        // objects that are handed over at a time

fleet::EtcdOptions ToEtcdOptions(const FleetOptions& options) {
  fleet::EtcdOptions etcd;
  etcd.members = fleet::ParseMembers(options.members);
  if (etcd.members.empty()) {
    throw Error("", "expected http(s)://HOST:PORT[,...], got " + options.members);
  }
  etcd.user = options.user;
  etcd.password = options.password;
  etcd.tls = {options.authorities, options.certificate, options.key};
  return etcd;
}

// An option that libcurl does not take is the caller's mistake.
fleet::EtcdClient MakeClient(const FleetOptions& options) try {
  return fleet::EtcdClient(ToEtcdOptions(options));
} catch (const fleet::EtcdError& error) {
  throw Error(options.members, error.what());
}

}  // namespace

FleetReader::FleetReader(const FleetOptions& asked, std::shared_ptr<FleetStore> into)
    : options(asked), store(std::move(into)), scope(options.sites), client(MakeClient(options)) {
  status.since = std::chrono::system_clock::now();
}

FleetReader::~FleetReader() {
  Close();
}

void FleetReader::Start() {
  {
    const BlockedSignals blocked;  // inherited by the thread
    thread = std::thread([this] { Run(); });
  }
  if (options.connectInBackground) return;
  std::unique_lock<std::mutex> lock(mutex);
  const auto isDecided = [this] {
    return status.state == State::connected || !status.reason.empty();
  };
  if (options.connectTimeout.count() <= 0) {
    changed.wait(lock, isDecided);
  } else if (!changed.wait_for(lock, std::min(options.connectTimeout, kLongestWait), isDecided)) {
    throw Error(
        options.members,
        "not read within " + std::to_string(options.connectTimeout.count()) + " milliseconds");
  }
  if (status.readings == 0) throw Error(options.members, status.reason);
}

void FleetReader::Close() {
  std::call_once(closed, [this] {
    {
      const std::lock_guard<std::mutex> lock(mutex);
      isEnding = true;
      changed.notify_all();
    }
    client.Cut();
    if (thread.joinable()) thread.join();
    SetState(State::lost, "closed");
    store->Close();
  });
}

FleetStatus FleetReader::Status() const {
  const std::lock_guard<std::mutex> lock(mutex);
  return status;
}

bool FleetReader::WaitForStatus(const FleetStatus& seen, milliseconds limit) const {
  std::unique_lock<std::mutex> lock(mutex);
  return changed.wait_for(lock, std::min(limit, kLongestWait), [&] {
    return status.state != seen.state || status.reason != seen.reason ||
           status.readings != seen.readings;
  });
}

// --- the thread ----------------------------------------------------------------------------------

void FleetReader::Run() {
  while (!IsEnding()) {
    try {
      if (Prepare()) FollowOn();
    } catch (const std::exception& error) {
      StartOver(error.what());
    }
  }
}

// Asks where the cluster is, which shows that a member answers and what became of what was read;
// reads everything if need be. False after a failure.
bool FleetReader::Prepare() {
  try {
    const fleet::Position now = fleet::ReadPosition(client, scope.Ranges().back().begin);
    if (!watch || !watch->IsAt(now)) ReadAll(now);
    SetState(State::connected, {});
    return true;
  } catch (const fleet::EtcdError& error) {
    // A compaction that overtakes a reading is no failure of the cluster.
    if (!error.IsCompacted()) SetState(State::lost, error.what());
  }
  PauseAfterFailure();
  return false;
}

// The end of a stream alone is no loss: another member may answer at once.
void FleetReader::FollowOn() {
  const auto begin = Clock::now();
  try {
    watch->Run(client, kSilence, [this](const auto& events) { Take(events); });
    pause = milliseconds(0);
  } catch (const fleet::EtcdError& error) {
    if (error.IsCompacted()) watch.reset();
    if (Clock::now() - begin >= kSoundWatch) pause = milliseconds(0);
    PauseAfterFailure();
  }
}

void FleetReader::ReadAll(const fleet::Position& at) {
  watch.reset();
  store->BeginReading();
  std::vector<fleet::WatchEvent> read;
  for (const fleet::WatchRange& range : scope.Ranges()) {
    fleet::ReadRange(
        client, range.begin, range.end,
        [&](fleet::KeyValue&& entry) {
          read.push_back({false, std::move(entry)});
          if (read.size() < kPiece) return;
          Take(read);
          read.clear();
        },
        at.revision);
  }
  Take(read);
  store->EndReading();
  watch.emplace(scope.Ranges(), at);
  const std::lock_guard<std::mutex> lock(mutex);
  ++status.readings;
}

// The documents are read here, without the store's mutex.
void FleetReader::Take(const std::vector<fleet::WatchEvent>& events) {
  std::vector<FleetNews> news;
  news.reserve(std::min(events.size(), kPiece));
  const auto skip = [this](const std::string& key, const char* reason) { Skip(key, reason); };
  for (const fleet::WatchEvent& event : events) {
    auto one = scope.Read(event, skip);
    if (one) news.push_back(std::move(*one));
    if (news.size() < kPiece) continue;
    store->Apply(std::move(news));
    news.clear();
  }
  store->Apply(std::move(news));
}

// Memory ran out, and nobody knows how far something was applied: followers cannot go on from that.
void FleetReader::StartOver(const std::string& reason) {
  watch.reset();
  store->Clear();
  SetState(State::lost, reason);
  PauseAfterFailure();
}

void FleetReader::Skip(const std::string& key, const char* reason) {
  const std::string text = key + ": " + reason;
  const std::lock_guard<std::mutex> lock(mutex);
  if (status.skipped++ == 0) {
    KELib::Logging::Log(nullptr, KELib::Logging::LOG_LEVEL_WARNING,
                        "Passing over what is in the cluster under %s", text.c_str());
  }
  status.lastSkipped = text;
}

// What is waited for is told only when followers and readers have it.
void FleetReader::SetState(State state, const std::string& reason) {
  const std::lock_guard<std::mutex> lock(mutex);
  if (state == State::lost && status.readings == 0 && !isEnding) state = State::connecting;
  if (status.state != state) status.since = std::chrono::system_clock::now();
  status.state = state;
  status.reason = reason;
  changed.notify_all();
}

// The first one goes on at once.
void FleetReader::PauseAfterFailure() {
  std::unique_lock<std::mutex> lock(mutex);
  changed.wait_for(lock, pause, [this] { return isEnding; });
  pause = pause.count() == 0 ? kFirstPause : std::min(2 * pause, kLongestPause);
}

bool FleetReader::IsEnding() const {
  const std::lock_guard<std::mutex> lock(mutex);
  return isEnding;
}

}  // namespace kecpp
