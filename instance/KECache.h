// SPDX-License-Identifier: MIT
//
// What the caches of both levels have in common: a mutex that their users take.
#ifndef KECPP_INSTANCE_KECACHE_H
#define KECPP_INSTANCE_KECACHE_H

#include "foundation/KEExport.h"
#include "foundation/KEMutex.h"

namespace KE::Instance {

class KECPP_API KECache {
 public:
  virtual ~KECache();

  // The cache's mutex; lives as long as the cache.
  virtual KELib::KEMutex* GetMutex() = 0;
};

}  // namespace KE::Instance

#endif
