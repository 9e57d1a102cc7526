// SPDX-License-Identifier: MIT
#include "instance/CacheWalk.h"

#include <algorithm>

#include "foundation/ElementPolicies.h"
#include "instance/KEDataCache.h"

namespace KE::Instance {

bool CacheWalk::Next(std::size_t wanted, std::vector<KELib::Stub::KEStubBase*>& piece) {
  cache.HeldByCaller();
  piece.clear();
  if (stage.buckets != cache.map.BucketCount()) {
    if (stage.next != 0) grown.push_back(stage);
    stage = {cache.map.BucketCount(), 0};
  }
  for (; stage.next < stage.buckets && piece.size() < wanted; ++stage.next) {
    for (auto* entry = cache.map.Chain(stage.next); entry != nullptr; entry = entry->next) {
      if (entry->value == nullptr) continue;  // the twin of one that was removed
      KELib::KEString& key = const_cast<KELib::KEString&>(entry->key);  // hashing takes no const
      if (grown.empty() || !WasVisited(KELib::ComputeHash(key))) piece.push_back(entry->value);
    }
  }
  return !piece.empty();
}

bool CacheWalk::WasVisited(unsigned int hash) const {
  return std::any_of(grown.begin(), grown.end(),
                     [hash](const Stage& done) { return hash % done.buckets < done.next; });
}

}  // namespace KE::Instance
