// SPDX-License-Identifier: MIT
#include "foundation/KEMutex.h"

namespace KELib {

KEMutex::KEMutex() {
  pthread_mutex_init(&mutex, nullptr);
}

KEMutex::~KEMutex() {
  pthread_mutex_destroy(&mutex);
}

}  // namespace KELib
