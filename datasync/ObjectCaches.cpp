// SPDX-License-Identifier: MIT
#include "datasync/ObjectCaches.h"

#include <memory>

namespace KE::Service {

namespace {

using KE::Instance::KEDataCache;
using KE::Instance::KindId;
using KE::Instance::kObjectKinds;
using KELib::Stub::KEStubBase;

}  // namespace

ObjectCaches::ObjectCaches(KE::Instance::KETypeCache& cache)
    : types(cache), changes(cache.Changes()), generation(cache.Generation()) {
  for (std::size_t i = 0; i < kCount; ++i) names[i] = kObjectKinds[i].cacheClass;
  LookUp();
}

void ObjectCaches::LookUp() {
  for (std::size_t i = 0; i < kCount; ++i) caches[i] = types.GetDataCache(names[i]);
}

// A data cache is unlinked by a thread that holds its mutex: one that is linked once its mutex is
// taken stays so.
void ObjectCaches::Lock(KE::Instance::KECacheGuard& guard, const KE::Instance::ObjectKind& kind) {
  for (;;) {
    const unsigned int now = types.Generation();  // first: what changes after this shows below
    if (now != generation) {
      generation = now;
      LookUp();
    }
    const KE::Instance::KindRange& group = KE::Instance::LockedWith(kind);
    KEDataCache* const* cache = caches + group.first->Index();
    for (KEDataCache* const* past = cache + (group.past - group.first); cache != past; ++cache) {
      guard.Lock(*cache);
    }
    if (types.Generation() == generation) return;
    guard.Unlock();
  }
}

KEStubBase* ObjectCaches::FindStub(KindId kind, const KELib::Xml::XmlSlice& id) {
  KEDataCache* const cache = Of(kind);
  if (cache == nullptr) return nullptr;
  id.CopyTo(key, keyRoom);
  KEDataCache::KeyPlace place;
  return cache->Find(key, place);
}

KEStubBase& ObjectCaches::FindOrFile(KindId kind, KE::Stub::ManagedObjectReference& object,
                                     MakeStub make, bool& isNew) {
  KEDataCache* const known = Of(kind);
  KEDataCache& cache =
      known != nullptr ? *known : types.Existing(names[static_cast<std::size_t>(kind)]);
  isNew = false;
  KEDataCache::KeyPlace place;
  if (KEStubBase* found = cache.Find(object.value, place)) return *found;
  std::unique_ptr<KEStubBase> stub(make(object));
  cache.SetValAt(place, object.value, stub.get());
  isNew = true;
  return *stub.release();
}

}  // namespace KE::Service
