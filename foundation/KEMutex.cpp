// SPDX-License-Identifier: MIT
#include "foundation/KEMutex.h"

namespace KELib {

KEMutex::KEMutex() {
  pthread_mutex_init(&mutex, nullptr);
}

KEMutex::~KEMutex() {
  pthread_mutex_destroy(&mutex);
}

void KEMutex::Lock() {
  pthread_mutex_lock(&mutex);
  SetOwner();
}

void KEMutex::Unlock() {
  ClearOwner();
  pthread_mutex_unlock(&mutex);
}

bool KEMutex::IsLocked() const {
  return owner.load(std::memory_order_relaxed) == pthread_self();
}

void KEMutex::SetOwner() {
  owner.store(pthread_self(), std::memory_order_relaxed);
}

void KEMutex::ClearOwner() {
  owner.store(0, std::memory_order_relaxed);
}

}  // namespace KELib
