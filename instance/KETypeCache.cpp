// SPDX-License-Identifier: MIT
#include "instance/KETypeCache.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <utility>

#include "foundation/KEException.h"
#include "foundation/KEMutexGuard.h"
#include "instance/ChangeHub.h"
#include "instance/KECacheGuard.h"
#include "instance/ObjectKinds.h"

namespace KE::Instance {

using KELib::KEString;

KETypeCache::KETypeCache() : KETypeCache(nullptr) {}

KETypeCache::KETypeCache(std::shared_ptr<ChangeHub> hub)
    : mutex(std::make_unique<KELib::KEMutex>()),
      table(std::make_unique<Table>()),
      changes(std::move(hub)) {}

// The order does not matter: each stub takes itself out of the lists of those that are left.
KETypeCache::~KETypeCache() = default;

ChangeHub* KETypeCache::Listener() const {
  return changes != nullptr && changes->IsOpen() ? changes.get() : nullptr;
}

KELib::KEMutex* KETypeCache::GetMutex() {
  return mutex.get();
}

void KETypeCache::CreateDataCache(KEString& typeName) {
  const unsigned int type = changes != nullptr ? changes->TypeOf(typeName) : 0;
  const std::unique_lock<std::shared_mutex> lock(table->lock);
  if (typeName.Empty() || map.Contains(typeName)) return;
  ++table->generation;
  const auto shell =
      std::find_if(shells.begin(), shells.end(), [&](Shell& s) { return s.name.Equals(typeName); });
  if (shell != shells.end()) {
    map.Insert(typeName, shell->cache.get());
    shell->cache.release();
    shells.erase(shell);
    return;
  }
  auto cache = std::make_unique<KEDataCache>();
  cache->Follow(changes.get(), type);
  map.Insert(typeName, cache.get());
  cache.release();
}

KEDataCache* KETypeCache::GetDataCacheNoLock(KEString& typeName) {
  const std::shared_lock<std::shared_mutex> lock(table->lock);
  KEDataCache** found = map.Get(typeName);
  return found != nullptr ? *found : nullptr;
}

KEDataCache* KETypeCache::GetDataCache(KEString& typeName) {
  return GetDataCacheNoLock(typeName);
}

KEDataIterator KETypeCache::DataIterator(KEString& typeName) {
  KEDataCache* cache = GetDataCache(typeName);
  if (cache == nullptr) throw KELib::SystemException("Unable to find data cache");
  return cache->Iterator();
}

KEDataCache& KETypeCache::Existing(KEString& typeName) {
  if (KEDataCache* cache = GetDataCache(typeName)) return *cache;
  KEString text("No Data Map found for type :");
  text += typeName;
  throw KELib::SystemException(text.Str(), text.Length());
}

void KETypeCache::GetVal(KEString& typeName, KEString& key, KELib::Stub::KEStubRef& ref) {
  Existing(typeName).GetVal(key, ref);
}

void KETypeCache::SetVal(KEString& typeName, KEString& key, KELib::Stub::KEStubBase* stub) {
  Existing(typeName).SetVal(key, stub);
}

void KETypeCache::RemoveVal(KEString& typeName, KEString& key) {
  Existing(typeName).RemoveVal(key);
}

void KETypeCache::RemoveValNoLock(KEString& typeName, KEString& key) {
  Existing(typeName).RemoveValNoLock(key);
}

// --- deleting ------------------------------------------------------------------------------------

void KETypeCache::DeleteDataCache(KEString& typeName) {
  KELib::KEMutexGuard guard(mutex.get());
  KEDataCache* cache = GetDataCache(typeName);
  if (cache == nullptr) return;
  KECacheGuard caches(this);
  caches.LockLinked(typeName);
  cache->ClearNoLock();
  Unlink(typeName);
}

void KETypeCache::Clear() {
  KELib::KEMutexGuard guard(mutex.get());
  std::vector<Named> all = ListInLockOrder();  // once: one that is made meanwhile is not locked
  KECacheGuard caches(this);
  for (const Named& named : all) caches.Lock(named.cache);
  for (const Named& named : all) named.cache->ClearNoLock();
  for (Named& named : all) Unlink(named.name);
}

void KETypeCache::Unlink(KEString& typeName) {
  const std::unique_lock<std::shared_mutex> lock(table->lock);
  KEDataCache** found = map.Get(typeName);
  if (found == nullptr) return;
  ++table->generation;
  shells.reserve(shells.size() + 1);
  Shell shell{KEString(typeName), nullptr};
  shell.cache.reset(*found);
  *found = nullptr;
  shells.push_back(std::move(shell));
  map.Remove(typeName);
}

std::vector<KETypeCache::Named> KETypeCache::ListInLockOrder() {
  std::vector<Named> all;
  {
    const std::unique_lock<std::shared_mutex> lock(table->lock);  // iterators register with the map
    for (auto it = map.Begin(); !it.End(); ++it) all.push_back({it->key, it->value});
  }
  std::sort(all.begin(), all.end(), [](const Named& a, const Named& b) {
    const std::size_t left = LockRank(a.name.Cstr()), right = LockRank(b.name.Cstr());
    return left != right ? left < right : std::strcmp(a.name.Cstr(), b.name.Cstr()) < 0;
  });
  return all;
}

std::vector<KEDataCache*> KETypeCache::InLockOrder() {
  std::vector<KEDataCache*> caches;
  for (const Named& named : ListInLockOrder()) caches.push_back(named.cache);
  return caches;
}

}  // namespace KE::Instance
