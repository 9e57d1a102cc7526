// SPDX-License-Identifier: MIT
//
// Bounds the memory of answers that are being made or sent: a client that asks for everything and
// reads nothing keeps an answer of megabytes for minutes.
//
// Thread safety: any thread.
#ifndef KECPP_TOOLS_AGENT_BACKLOG_H
#define KECPP_TOOLS_AGENT_BACKLOG_H

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>

namespace tools::agent {

class Backlog {
 public:
  using Clock = std::chrono::steady_clock;

  explicit Backlog(std::size_t bytes) : limit(bytes) {}

  // Room that is taken for one answer, until the object is destroyed. The backlog outlives it.
  class Share {
   public:
    explicit Share(Backlog& backlog) : owner(backlog) {}
    ~Share() {
      std::lock_guard<std::mutex> lock(owner.mutex);
      owner.taken -= bytes;
      owner.given.notify_all();
    }
    Share(const Share&) = delete;
    Share& operator=(const Share&) = delete;

   private:
    friend class Backlog;
    Backlog& owner;
    std::size_t bytes = 0;
  };

  // Whether an answer of that size may be made. One that is larger than the limit has room when it
  // is the only one.
  bool HasRoom(std::size_t bytes) {
    std::lock_guard<std::mutex> lock(mutex);
    return Fits(bytes);
  }

  // Waits for room; false when there is none in time.
  bool AwaitRoom(std::size_t bytes, Clock::time_point deadline) {
    std::unique_lock<std::mutex> lock(mutex);
    return given.wait_until(lock, deadline, [&] { return Fits(bytes); });
  }

  // Takes the room; null when there is none.
  std::unique_ptr<Share> Reserve(std::size_t bytes) {
    auto share = std::make_unique<Share>(*this);
    std::lock_guard<std::mutex> lock(mutex);
    if (!Fits(bytes)) return nullptr;
    share->bytes = bytes;
    taken += bytes;
    return share;
  }

 private:
  // The caller holds the mutex.
  bool Fits(std::size_t bytes) const {
    return taken == 0 || (bytes <= limit && taken <= limit - bytes);
  }

  const std::size_t limit;
  std::mutex mutex;
  std::condition_variable given;
  std::size_t taken = 0;  // guarded by `mutex`
};

}  // namespace tools::agent

#endif
