// SPDX-License-Identifier: MIT
#include "instance/CacheWalk.h"

#include <algorithm>
#include <utility>

#include "foundation/ElementPolicies.h"
#include "instance/KEDataCache.h"

namespace KE::Instance {
namespace {

using KELib::KEString;
using KELib::Stub::KEStubBase;

// Hashing takes no constant text.
unsigned int HashOf(const KEString& key) {
  return KELib::ComputeHash(const_cast<KEString&>(key));
}

}  // namespace

bool CacheWalk::Next(KEDataCache& cache, std::size_t most, std::vector<KEStubBase*>& piece) {
  cache.HeldByCaller();
  piece.clear();
  if (stage.buckets != cache.map.BucketCount()) {
    if (stage.next != 0 || stage.last) grown.push_back(std::move(stage));
    stage = {cache.map.BucketCount(), 0, {}};
  }
  for (; stage.next < stage.buckets; ++stage.next) {
    const std::size_t before = piece.size();
    AddChain(cache, piece);
    if (piece.size() > most) {
      piece.resize(before);
      if (before == 0) AddPartOfChain(cache, most, piece);
      break;
    }
    stage.last.reset();
  }
  return !piece.empty();
}

// Of the bucket whose turn it is.
void CacheWalk::AddChain(KEDataCache& cache, std::vector<KEStubBase*>& piece) const {
  cache.HeldByCaller();
  const bool isFresh = grown.empty() && !stage.last;
  for (auto* entry = cache.map.Chain(stage.next); entry != nullptr; entry = entry->next) {
    if (entry->value == nullptr) continue;  // the twin of one that was removed
    if (isFresh || !WasVisited(HashOf(entry->key), entry->key.Cstr())) {
      piece.push_back(entry->value);
    }
  }
}

// In the order of the keys, so that the last one says which of the chain were visited.
void CacheWalk::AddPartOfChain(KEDataCache& cache, std::size_t most,
                               std::vector<KEStubBase*>& piece) {
  cache.HeldByCaller();
  std::vector<std::pair<std::string, KEStubBase*>> chain;
  for (auto* entry = cache.map.Chain(stage.next); entry != nullptr; entry = entry->next) {
    if (entry->value == nullptr || WasVisited(HashOf(entry->key), entry->key.Cstr())) continue;
    chain.emplace_back(entry->key.Cstr(), entry->value);
  }
  const auto end = chain.begin() + static_cast<std::ptrdiff_t>(most);
  std::partial_sort(chain.begin(), end, chain.end());
  for (auto taken = chain.begin(); taken != end; ++taken) piece.push_back(taken->second);
  stage.last = std::prev(end)->first;
}

bool CacheWalk::WasVisited(unsigned int hash, const char* key) const {
  const auto isIn = [&](const Stage& done) {
    if (done.buckets == 0) return false;
    const unsigned int bucket = hash % done.buckets;
    return bucket < done.next || (bucket == done.next && done.last && *done.last >= key);
  };
  return isIn(stage) || std::any_of(grown.begin(), grown.end(), isIn);
}

}  // namespace KE::Instance
