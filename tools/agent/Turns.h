// SPDX-License-Identifier: MIT
//
// Lets a few threads work at a time while the others wait for their turn.
//
// Thread safety: any thread.
#ifndef KECPP_TOOLS_AGENT_TURNS_H
#define KECPP_TOOLS_AGENT_TURNS_H

#include <condition_variable>
#include <mutex>

namespace tools::agent {

class Turns {
 public:
  explicit Turns(unsigned atOnce) : free(atOnce) {}

  // A turn. The constructor may block; the destructor ends the turn.
  class Turn {
   public:
    explicit Turn(Turns& turns) : owner(turns) { owner.Take(); }
    ~Turn() { owner.Give(); }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

   private:
    Turns& owner;
  };

 private:
  void Take() {
    std::unique_lock<std::mutex> lock(mutex);
    given.wait(lock, [this] { return free > 0; });
    --free;
  }
  void Give() {
    std::lock_guard<std::mutex> lock(mutex);
    ++free;
    given.notify_one();
  }

  std::mutex mutex;
  std::condition_variable given;
  unsigned free;  // guarded by `mutex`
};

}  // namespace tools::agent

#endif
