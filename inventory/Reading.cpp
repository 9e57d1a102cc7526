// SPDX-License-Identifier: MIT
#include "inventory/Reading.h"

#include <algorithm>

namespace kecpp {
namespace {

using KELib::Stub::KEStubBase;

// Daemons may write an entity where it is not needed, and in more than one way.
bool MayBeWrittenOtherwise(const std::string& key) {
  return std::any_of(key.begin(), key.end(), [](unsigned char c) {
    return c < ' ' || c > '~' || c == '&' || c == '<' || c == '>' || c == '"' || c == '\'';
  });
}

KEStubBase* FindAmongEntities(KE::Instance::KEDataCache& cache, const std::string& key) {
  for (KE::Instance::KEDataIterator it = cache.Iterator(); !it.End(); ++it) {
    const std::string_view stored = (*it)->key.Cstr();
    if (stored.find('&') != std::string_view::npos && Decode(stored) == key) return (*it)->value;
  }
  return nullptr;
}

}  // namespace

std::size_t CountOf(const Connection& connection, Kind kind) {
  if (!connection.HasCaches()) return 0;
  KELib::KEString name(CacheOf(kind));
  KE::Instance::KEDataCache* cache = connection.Cache().GetDataCache(name);
  if (cache == nullptr) return 0;
  KELib::KEMutexGuard guard(cache->GetMutex());
  return cache->Size();
}

bool LookAtStub(const Connection& connection, Kind kind, const std::string& key,
                const std::function<void(KEStubBase&)>& use) {
  KELib::KEString name(CacheOf(kind));
  KE::Instance::KEDataCache* cache = connection.Cache().GetDataCache(name);
  if (cache == nullptr) return false;
  KELib::KEString stored(Encode(key).c_str());
  KE::Instance::KECacheGuard guard(&connection.Cache());
  guard.LockLinked(name);
  KELib::Stub::KEStubRef ref;
  cache->GetVal(stored, ref);
  KEStubBase* found = ref.HasData() ? ref.GetData() : nullptr;
  if (found == nullptr && MayBeWrittenOtherwise(key)) found = FindAmongEntities(*cache, key);
  if (found != nullptr) use(*found);
  return found != nullptr;
}

}  // namespace kecpp
