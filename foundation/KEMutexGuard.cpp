// SPDX-License-Identifier: MIT
#include "foundation/KEMutexGuard.h"

namespace KELib {

KEMutexGuard::KEMutexGuard(KEMutex* mutex) : locked(mutex && !mutex->IsLocked() ? mutex : nullptr) {
  if (locked) {
    locked->Lock();
  }
}

KEMutexGuard::~KEMutexGuard() {
  Release();
}

void KEMutexGuard::Release() {
  if (locked) {
    locked->Unlock();
    locked = nullptr;
  }
}

}  // namespace KELib
