// SPDX-License-Identifier: MIT
//
// Visits the stubs of a data cache in pieces, with the cache's mutex given up in between. Each stub
// that is filed all the time is met exactly once; one that comes or goes meanwhile once, or not at
// all, or twice when it was removed and filed again.
//
// An iterator would not do: removing any stub ends it. The walk remembers a bucket. When the cache
// has grown meanwhile it starts again and passes over the stubs that were in a bucket it had
// visited before: which bucket that was follows from the key alone. So a walk may also go on in
// another cache, whose stubs are then met as if they had been in the first one all the time.
//
// Thread safety: none; hold the cache's mutex during each call. Ownership: none.
#ifndef KECPP_INSTANCE_CACHEWALK_H
#define KECPP_INSTANCE_CACHEWALK_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "foundation/KEExport.h"
#include "stub/base/KEStubBase.h"

namespace KE::Instance {

class KEDataCache;

class KECPP_API CacheWalk {
 public:
  // Puts the next stubs into `piece`, at most `most` of them, which is not 0. They are good while
  // the mutex is held. False when there are none left. O(piece), and O(buckets) in all; a chain
  // that is longer than `most` is gone through for each piece of it.
  bool Next(KEDataCache& cache, std::size_t most, std::vector<KELib::Stub::KEStubBase*>& piece);

  // Whether the last Next came to the end.
  bool AtEnd() const { return stage.next == stage.buckets; }

 private:
  // So far the cache had so many buckets, and those before `next` were visited; of that one the
  // keys up to `last`.
  struct Stage {
    unsigned int buckets;
    unsigned int next;
    std::optional<std::string> last;
  };

  void AddChain(KEDataCache& cache, std::vector<KELib::Stub::KEStubBase*>& piece) const;
  void AddPartOfChain(KEDataCache& cache, std::size_t most,
                      std::vector<KELib::Stub::KEStubBase*>& piece);
  bool WasVisited(unsigned int hash, const char* key) const;

  std::vector<Stage> grown;  // finished by a growth or another cache: few
  Stage stage = {0, 0, {}};
};

}  // namespace KE::Instance

#endif
