// SPDX-License-Identifier: MIT
//
// The door between the one thread that connects to the daemon and the many that read its caches.
// Caches go when a connection is given up, so a reader is let in only while they are there, and
// the thread that closes the door waits for the reader that is inside.
//
// Readers come in one at a time. They would wait for one another's locks anyway; like this the sync
// thread, which wants the same locks, never competes with more than one of them.
//
// Thread safety: any thread, but Read must not be nested.
#ifndef KECPP_TOOLS_AGENT_CACHEGATE_H
#define KECPP_TOOLS_AGENT_CACHEGATE_H

#include <kecpp.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>

namespace tools::agent {

// What is behind the door.
struct Caches {
  KE::Instance::KETypeCache* cache = nullptr;
  bool hasAuthorization = false;  // the daemon lets this account read roles and privileges
};

class CacheGate {
 public:
  // Readers wait for the caches at most for `limit`.
  explicit CacheGate(std::chrono::milliseconds limit);

  // Returns when the caches are there or will not come in time.
  void AwaitOpen();

  // Calls `read` while the caches are there. Throws NotReady when they are not. `read` copies what
  // it needs and returns: nobody else comes in meanwhile.
  void Read(const std::function<void(const Caches&)>& read);

  void Open(const Caches& caches);

  // Returns when nobody reads any more.
  void Close();

  // Lets every waiting reader go, for good.
  void End();

 private:
  Caches Current();

  const std::chrono::milliseconds limit;
  std::mutex inside;  // held by the reader that is inside; taken before `mutex`
  std::mutex mutex;
  std::condition_variable changed;
  Caches open;  // guarded by `mutex`, like all below
  bool ended = false;
};

}  // namespace tools::agent

#endif
