// SPDX-License-Identifier: MIT
#include "tools/agent/CacheGate.h"

#include "tools/agent/Errors.h"

namespace tools::agent {

CacheGate::CacheGate(std::chrono::milliseconds readersWait) : limit(readersWait) {}

void CacheGate::Read(const std::function<void(const Caches&)>& read) {
  std::lock_guard<std::mutex> alone(inside);
  read(Current());
}

void CacheGate::AwaitOpen() {
  std::unique_lock<std::mutex> lock(mutex);
  changed.wait_for(lock, limit, [this] { return open.cache || ended; });
}

// The caller is inside, so what it gets stays valid.
Caches CacheGate::Current() {
  std::lock_guard<std::mutex> lock(mutex);
  if (!open.cache || ended) throw NotReady();
  return open;
}

void CacheGate::Open(const Caches& caches) {
  std::lock_guard<std::mutex> lock(mutex);
  open = caches;
  changed.notify_all();
}

void CacheGate::Close() {
  {
    std::lock_guard<std::mutex> lock(mutex);
    open = {};
  }
  std::lock_guard<std::mutex> alone(inside);  // later readers find nothing
}

void CacheGate::End() {
  std::lock_guard<std::mutex> lock(mutex);
  ended = true;
  changed.notify_all();
}

}  // namespace tools::agent
