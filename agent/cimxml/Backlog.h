// SPDX-License-Identifier: MIT
//
// Bounds the memory of answers that are made and not taken yet: whoever asks for everything and
// takes nothing keeps an answer of megabytes for minutes.
//
// Thread safety: any thread.
#ifndef KECPP_AGENT_CIMXML_BACKLOG_H
#define KECPP_AGENT_CIMXML_BACKLOG_H

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>

namespace cimxml {

class Backlog {
 public:
  using Clock = std::chrono::steady_clock;

  explicit Backlog(std::size_t bytes) : limit(bytes) {}

  // Counts an answer's bytes until it goes. The backlog outlives it.
  class Share {
   public:
    Share(Backlog& backlog, std::size_t answerBytes) : owner(backlog), bytes(answerBytes) {
      std::lock_guard<std::mutex> lock(owner.mutex);
      owner.taken += bytes;
    }
    ~Share() {
      std::lock_guard<std::mutex> lock(owner.mutex);
      owner.taken -= bytes;
      owner.given.notify_all();
    }
    Share(const Share&) = delete;
    Share& operator=(const Share&) = delete;

   private:
    Backlog& owner;
    const std::size_t bytes;
  };

  // Whether one more answer may be made, of any size.
  bool HasRoom() {
    std::lock_guard<std::mutex> lock(mutex);
    return taken < limit;
  }

  // Waits for room; false when there is none in time.
  bool AwaitRoom(Clock::time_point deadline) {
    std::unique_lock<std::mutex> lock(mutex);
    return given.wait_until(lock, deadline, [this] { return taken < limit; });
  }

 private:
  const std::size_t limit;
  std::mutex mutex;
  std::condition_variable given;
  std::size_t taken = 0;  // guarded by `mutex`
};

}  // namespace cimxml

#endif
