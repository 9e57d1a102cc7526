// SPDX-License-Identifier: MIT
//
// Bounds the memory of answers that are being made or sent: clients that ask for everything and
// read nothing keep a piece of their answers for minutes, and the keys of what is to come.
//
// Thread safety: any thread.
#ifndef KECPP_TOOLS_AGENT_BACKLOG_H
#define KECPP_TOOLS_AGENT_BACKLOG_H

#include <algorithm>
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

    // Takes so much from now on, also when there is no room for it: a part of the answer was sent,
    // and it goes on. New answers wait then.
    void Resize(std::size_t now) {
      std::lock_guard<std::mutex> lock(owner.mutex);
      const bool shrinks = now < bytes;
      owner.Take(now - bytes);
      bytes = now;
      if (shrinks) owner.given.notify_all();
    }

   private:
    friend class Backlog;
    Backlog& owner;
    std::size_t bytes = 0;
  };

  // Waits for room for an answer of that size; false when there is none in time. One that is larger
  // than the limit has room when it is the only one.
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
    Take(bytes);
    return share;
  }

  // The most that was taken at a time.
  std::size_t Peak() {
    std::lock_guard<std::mutex> lock(mutex);
    return peak;
  }

 private:
  // The caller holds the mutex. A negative number gives room back.
  void Take(std::size_t bytes) {
    taken += bytes;
    peak = std::max(peak, taken);
  }

  // The caller holds the mutex.
  bool Fits(std::size_t bytes) const {
    return taken == 0 || (bytes <= limit && taken <= limit - bytes);
  }

  const std::size_t limit;
  std::mutex mutex;
  std::condition_variable given;
  std::size_t taken = 0;  // guarded by `mutex`, like the next
  std::size_t peak = 0;
};

}  // namespace tools::agent

#endif
