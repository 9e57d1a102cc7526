// SPDX-License-Identifier: MIT
#include <dlfcn.h>
#include <pthread.h>

#include <atomic>
#include <cerrno>

#include "support/ReplacedSymbol.h"
#include "torture/FailingCalls.h"

namespace torture {
namespace {

thread_local int held = 0;
std::atomic<unsigned long> lost{0};

using Function = int (*)(void*);
using Original = std::atomic<Function>;

int Call(Original& original, const char* name, void* lock) {
  if (original == nullptr) original = reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
  return original.load()(lock);
}

int Lock(Original& original, const char* name, void* lock) {
  const int result = Call(original, name, lock);
  if (result == 0) ++held;
  return result;
}

int Unlock(Original& original, const char* name, void* lock) {
  --held;
  return Call(original, name, lock);
}

int Destroy(Original& original, const char* name, void* lock) {
  const int result = Call(original, name, lock);
  lost += result == EBUSY ? 1 : 0;
  return result;
}

}  // namespace

int HeldLocks() {
  return held;
}

void NoteThreadEnd() {
  if (held > 0) lost += static_cast<unsigned long>(held);
}

unsigned long LostLocks() {
  return lost;
}

// No guard of a static may be in here: it would lock a mutex.
#define TORTURE_LOCK(function, name, how)              \
  REPLACED_SYMBOL(int, function, name, (void* lock)) { \
    static Original original{nullptr};                 \
    return how(original, name, lock);                  \
  }

TORTURE_LOCK(TortureLock, "pthread_mutex_lock", Lock)
TORTURE_LOCK(TortureTryLock, "pthread_mutex_trylock", Lock)
TORTURE_LOCK(TortureUnlock, "pthread_mutex_unlock", Unlock)
TORTURE_LOCK(TortureReadLock, "pthread_rwlock_rdlock", Lock)
TORTURE_LOCK(TortureWriteLock, "pthread_rwlock_wrlock", Lock)
TORTURE_LOCK(TortureRwUnlock, "pthread_rwlock_unlock", Unlock)
TORTURE_LOCK(TortureDestroy, "pthread_mutex_destroy", Destroy)

}  // namespace torture
