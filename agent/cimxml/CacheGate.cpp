// SPDX-License-Identifier: MIT
#include "agent/cimxml/CacheGate.h"

#include "agent/cimxml/Errors.h"

namespace cimxml {

CacheGate::CacheGate(std::chrono::milliseconds readersWait) : limit(readersWait) {}

void CacheGate::Read(const std::function<void(const Caches&)>& read) {
  const Caches caches = Enter();
  struct Exit {
    CacheGate& gate;
    ~Exit() { gate.Leave(); }
  } exit{*this};
  read(caches);
}

Caches CacheGate::Enter() {
  std::unique_lock<std::mutex> lock(mutex);
  changed.wait_for(lock, limit, [this] { return open.cache || ended; });
  if (!open.cache || ended) throw NotReady();
  ++readers;
  return open;
}

void CacheGate::Leave() {
  std::lock_guard<std::mutex> lock(mutex);
  if (--readers == 0) changed.notify_all();
}

void CacheGate::Open(const Caches& caches) {
  std::lock_guard<std::mutex> lock(mutex);
  open = caches;
  changed.notify_all();
}

void CacheGate::Close() {
  std::unique_lock<std::mutex> lock(mutex);
  open = {};
  changed.wait(lock, [this] { return readers == 0; });
}

void CacheGate::End() {
  std::lock_guard<std::mutex> lock(mutex);
  ended = true;
  changed.notify_all();
}

}  // namespace cimxml
