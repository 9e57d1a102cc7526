// SPDX-License-Identifier: MIT
//
// Asks the memory for what a look-up in a data cache will read, some time before the look-up. In a
// large cache each step of one waits for the memory: the bucket, its first entry, the stub. A
// further entry of the bucket is not fetched.
//
// Thread safety: none; the caller holds the cache's mutex.
#ifndef KECPP_INSTANCE_CACHEFETCH_H
#define KECPP_INSTANCE_CACHEFETCH_H

#include "foundation/FetchAhead.h"
#include "instance/KEDataCache.h"

namespace KE::Instance {

class CacheFetch {
 public:
  explicit CacheFetch(const KEDataCache& fetched) : cache(fetched) {}

  // The three steps for a key of that hash. Each one reads what the step before it has fetched, and
  // so should come later by the time that the memory takes.
  KECPP_FETCHES void Bucket(unsigned int hash) const {
    cache.HeldByCaller();
    KELib::FetchAhead<1>(cache.map.PlaceOfChain(hash % cache.map.BucketCount()));
  }
  KECPP_FETCHES void Entry(unsigned int hash) const {
    const auto* entry = First(hash);
    if (entry != nullptr) KELib::FetchAhead<2>(entry);  // mostly its key is right behind it
  }
  KECPP_FETCHES void Stub(unsigned int hash) const {
    const auto* entry = First(hash);
    if (entry != nullptr && entry->value != nullptr) KELib::FetchAhead<3>(entry->value);
  }

 private:
  const KELib::KEEntry<KELib::KEString, KELib::Stub::KEStubBase*>* First(unsigned int hash) const {
    cache.HeldByCaller();
    return cache.map.Chain(hash % cache.map.BucketCount());
  }

  const KEDataCache& cache;
};

}  // namespace KE::Instance

#endif
