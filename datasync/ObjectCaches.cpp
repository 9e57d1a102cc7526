// SPDX-License-Identifier: MIT
#include "datasync/ObjectCaches.h"

#include <cstring>
#include <memory>

namespace KE::Service {

namespace {

using KE::Instance::KEDataCache;
using KE::Instance::KindId;
using KE::Instance::kObjectKinds;
using KELib::Stub::KEStubBase;
using KELib::Xml::XmlSlice;

// The stub filed under `id`; null when there is none. A NUL ends an identifier as it ends every
// text: one that was found has none, since no key has one.
KEStubBase* FindIn(KEDataCache& cache, XmlSlice& id, KEDataCache::KeyPlace& place) {
  if (KEStubBase* const found = cache.Find(id.text, id.length, place)) return found;
  const void* const nul = std::memchr(id.text, '\0', id.length);
  if (nul == nullptr) return nullptr;
  id.length = static_cast<unsigned int>(static_cast<const char*>(nul) - id.text);
  return cache.Find(id.text, id.length, place);
}

}  // namespace

ObjectCaches::ObjectCaches(KE::Instance::KETypeCache& cache)
    : types(cache), changes(cache.Changes()), generation(cache.Generation()) {
  for (std::size_t i = 0; i < kCount; ++i) names[i] = kObjectKinds[i].cacheClass;
  LookUp();
}

void ObjectCaches::LookUp() {
  for (std::size_t i = 0; i < kCount; ++i) {
    caches[i] = types.GetDataCache(names[i]);
    mutexes[i] = caches[i] != nullptr ? caches[i]->GetMutex() : nullptr;
  }
}

// A data cache is unlinked by a thread that holds its mutex: one that is linked once its mutex is
// taken stays so.
void ObjectCaches::Lock(HeldMutexes& held, const KE::Instance::ObjectKind& kind) {
  for (;;) {
    const unsigned int now = types.Generation();  // first: what changes after this shows below
    if (now != generation) {
      generation = now;
      LookUp();
    }
    const KE::Instance::KindRange& group = KE::Instance::LockedWith(kind);
    KELib::KEMutex* const* mutex = mutexes + group.first->Index();
    for (KELib::KEMutex* const* past = mutex + (group.past - group.first); mutex != past; ++mutex) {
      if (*mutex != nullptr) held.Lock(**mutex);
    }
    if (types.Generation() == generation) return;
    held.Unlock();
  }
}

KEStubBase* ObjectCaches::FindStub(KindId kind, XmlSlice id) {
  KEDataCache* const cache = Of(kind);
  if (cache == nullptr || cache->Size() == 0) return nullptr;
  KEDataCache::KeyPlace place;
  return FindIn(*cache, id, place);
}

KEStubBase& ObjectCaches::FindOrFile(KindId kind, KE::Stub::ManagedObjectReference& object,
                                     XmlSlice id, MakeStub make, bool& isNew) {
  KEDataCache* const known = Of(kind);
  KEDataCache& cache =
      known != nullptr ? *known : types.Existing(names[static_cast<std::size_t>(kind)]);
  isNew = false;
  KEDataCache::KeyPlace place;
  if (KEStubBase* found = FindIn(cache, id, place)) return *found;
  std::unique_ptr<KEStubBase> stub(make(object, id.length));
  cache.SetValAt(place, object.value, stub.get());
  isNew = true;
  memory.NoteAllocated(stub.get());
  return *stub.release();
}

}  // namespace KE::Service
