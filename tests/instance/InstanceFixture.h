// SPDX-License-Identifier: MIT
//
// Short ways to file, find and count stubs in the caches.
#ifndef KECPP_TESTS_INSTANCE_INSTANCEFIXTURE_H
#define KECPP_TESTS_INSTANCE_INSTANCEFIXTURE_H

#include <atomic>
#include <functional>
#include <thread>

#include "foundation/KEMutexGuard.h"
#include "instance/KETypeCache.h"
#include "support/Counted.h"

namespace KE::Instance {

using CountedStub = Counted<KELib::Stub::KEStubBase>;

inline KELib::Stub::KEStubBase* Find(KEDataCache& cache, const char* key) {
  KELib::KEString text(key);
  KELib::Stub::KEStubRef ref;
  cache.GetVal(text, ref);
  return ref.GetData();
}

inline KEDataCache& MakeCache(KETypeCache& types, const char* name) {
  KELib::KEString text(name);
  types.CreateDataCache(text);
  return *types.GetDataCache(text);
}

// Runs `work` on another thread while this one holds the mutex; `whileBlocked` is called when that
// thread has begun. What `work` does behind the mutex happens after `whileBlocked` or not at all.
inline void RunAgainstHolder(KELib::KEMutex& mutex, const std::function<void()>& work,
                             const std::function<void()>& whileBlocked) {
  std::atomic<bool> begun{false};
  std::thread worker;
  {
    KELib::KEMutexGuard guard(&mutex);
    worker = std::thread([&] {
      begun = true;
      work();
    });
    while (!begun) std::this_thread::yield();
    whileBlocked();
  }
  worker.join();
}

}  // namespace KE::Instance

#endif
