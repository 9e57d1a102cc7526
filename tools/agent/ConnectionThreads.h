// SPDX-License-Identifier: MIT
//
// A thread for each connection, so that a slow client costs its own thread and nobody else's.
//
// Thread safety: any thread.
#ifndef KECPP_TOOLS_AGENT_CONNECTIONTHREADS_H
#define KECPP_TOOLS_AGENT_CONNECTIONTHREADS_H

#include <condition_variable>
#include <functional>
#include <mutex>

namespace tools::agent {

class ConnectionThreads {
 public:
  explicit ConnectionThreads(unsigned connections) : limit(connections) {}

  // Runs `serve` on a new thread. False when as many as allowed are running or the system has no
  // more threads.
  bool Start(std::function<void()> serve);

  // Returns when none is running. To be called before the object goes.
  void AwaitEnd();

 private:
  bool TakePlace();
  void GivePlace();

  const unsigned limit;
  std::mutex mutex;
  std::condition_variable left;
  unsigned taken = 0;  // guarded by `mutex`
};

}  // namespace tools::agent

#endif
