// SPDX-License-Identifier: MIT
//
// Visits the stubs of a data cache in pieces, with the cache's mutex given up in between. Each stub
// that is filed all the time is met exactly once; one that comes or goes meanwhile once, or not at
// all, or twice when it was removed and filed again.
//
// An iterator would not do: removing any stub ends it. The walk remembers a bucket. When the cache
// has grown meanwhile it starts again and passes over the stubs that were in a bucket it had
// visited before: which bucket that was follows from the key alone.
//
// Thread safety: none; hold the cache's mutex during each call. Ownership: borrows the cache.
#ifndef KECPP_INSTANCE_CACHEWALK_H
#define KECPP_INSTANCE_CACHEWALK_H

#include <cstddef>
#include <vector>

#include "foundation/KEExport.h"
#include "stub/base/KEStubBase.h"

namespace KE::Instance {

class KEDataCache;

class KECPP_API CacheWalk {
 public:
  explicit CacheWalk(KEDataCache& walked) : cache(walked) {}

  // Puts the next stubs into `piece`, at least `wanted` of them unless these are the last, and
  // those of the last one's bucket. False when there are none left. The stubs are good while the
  // mutex is held. O(piece), and O(buckets) in all.
  bool Next(std::size_t wanted, std::vector<KELib::Stub::KEStubBase*>& piece);

 private:
  // So far the cache had so many buckets, and those before `next` were visited.
  struct Stage {
    unsigned int buckets;
    unsigned int next;
  };

  bool WasVisited(unsigned int hash) const;

  KEDataCache& cache;
  std::vector<Stage> grown;  // finished by a growth, each bigger than the one before: few
  Stage stage = {0, 0};
};

}  // namespace KE::Instance

#endif
