// SPDX-License-Identifier: MIT
//
// The gate between the one thread that connects to the daemon and the many that read its caches.
// Caches go when a connection is given up, so a reader gets in only while they exist, and the
// thread that closes the gate waits for the reader that is inside.
//
// One reader at a time gets in. Readers would wait for each other's locks anyway, and so the sync
// thread, which needs the same locks, competes with one of them at most.
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

// What is behind the gate.
struct Caches {
  KE::Instance::KETypeCache* cache = nullptr;
  bool hasAuthorization = false;  // the daemon lets this account read roles and privileges
};

class CacheGate {
 public:
  // Readers wait for the caches at most for `limit`.
  explicit CacheGate(std::chrono::milliseconds limit);

  // Waits until the caches are there, or for as long as readers wait at most.
  void AwaitOpen();

  // Calls `read` while the caches are there. Throws NotReady when they are not. `read` copies what
  // it needs and returns: no other reader gets in until then.
  void Read(const std::function<void(const Caches&)>& read);

  void Open(const Caches& caches);

  // Returns when nobody reads any more.
  void Close();

  // Releases every waiting reader; no more get in.
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
