// SPDX-License-Identifier: MIT
#include "instance/KEDataCache.h"

#include "foundation/KEMutexGuard.h"
#include "instance/ChangeHub.h"

namespace KE::Instance {

using KELib::KEString;
using KELib::Stub::KEStubBase;

namespace {

// Both are short: a call would take longer to begin.
bool IsText(const char* key, const char* text, unsigned int length) {
  for (unsigned int i = 0; i < length; ++i) {
    if (key[i] != text[i] || key[i] == '\0') return false;
  }
  return key[length] == '\0';
}

}  // namespace

// The mutex, and who learns of changes; these are guarded by it.
class alignas(64) KEDataCache::State : public KELib::KEMutex {
 public:
  ChangeHub* hub = nullptr;
  unsigned int type = 0;
};

KEDataCache::KEDataCache() : mutex(new State) {}

KEDataCache::~KEDataCache() {
  delete static_cast<State*>(mutex.release());
}

KEDataCache::State& KEDataCache::Own() const {
  return static_cast<State&>(*mutex);
}

void KEDataCache::Follow(ChangeHub* hub, unsigned int type) {
  Own().hub = hub;
  Own().type = type;
}

unsigned int KEDataCache::FeedType() const {
  return Own().type;
}

// Null when nobody wants to know.
ChangeHub* KEDataCache::Listener() const {
  ChangeHub* const hub = Own().hub;
  return hub != nullptr && hub->IsOpen() ? hub : nullptr;
}

KELib::KEMutex* KEDataCache::GetMutex() {
  return mutex.get();
}

void KEDataCache::GetVal(KEString& key, KELib::Stub::KEStubRef& ref) {
  HeldByCaller();
  if (KEStubBase** found = map.Get(key)) ref.SetData(*found);
}

void KEDataCache::SetVal(KEString& key, KEStubBase* stub) {
  HeldByCaller();
  if (ChangeHub* const hub = Listener()) {
    FileAndTell(*hub, key, stub);
  } else {
    map.Insert(key, stub);
  }
}

// The text may be a piece of a document, or a copy that was just made: strlen would have to wait
// until all of that is written.
KEStubBase* KEDataCache::Find(const char* text, unsigned int length, KeyPlace& place) {
  HeldByCaller();
  place.hash = KELib::HashText(text, length);
  const auto* entry = map.Chain(place.hash % map.BucketCount());
  while (entry != nullptr && !IsText(entry->key.Cstr(), text, length)) entry = entry->next;
  place.isFree = entry == nullptr;
  return entry != nullptr ? entry->value : nullptr;
}

void KEDataCache::SetValAt(const KeyPlace& place, KEString& key, KEStubBase* stub) {
  HeldByCaller();
  if (!place.isFree) {
    SetVal(key, stub);
    return;
  }
  ChangeHub* const hub = Listener();
  if (hub != nullptr) hub->Filed(Own().type, key, nullptr, *stub);
  try {
    map.InsertAbsent(key, place.hash, stub);
  } catch (...) {
    if (hub != nullptr) hub->Unfiled(nullptr, *stub);
    throw;
  }
}

// A null stub hides what is filed.
void KEDataCache::FileAndTell(ChangeHub& hub, KEString& key, KEStubBase* stub) {
  KEStubBase** const present = map.Get(key);
  KEStubBase* const old = present != nullptr ? *present : nullptr;
  if (stub == nullptr) {
    if (old != nullptr) hub.Removed(*old);
    map.Insert(key, stub);
    return;
  }
  hub.Filed(Own().type, key, old, *stub);
  try {
    map.Insert(key, stub);
  } catch (...) {
    hub.Unfiled(old, *stub);
    throw;
  }
}

void KEDataCache::RemoveVal(KEString& key) {
  KELib::KEMutexGuard guard(mutex.get());
  Remove(key);
}

void KEDataCache::RemoveValNoLock(KEString& key) {
  HeldByCaller();
  Remove(key);
}

void KEDataCache::Remove(KEString& key) {
  if (ChangeHub* const hub = Listener()) {
    if (KEStubBase** const found = map.Get(key)) hub->Removed(**found);
  }
  map.Remove(key);
}

void KEDataCache::ClearNoLock() {
  HeldByCaller();
  if (ChangeHub* const hub = Listener()) hub->RemovedAll(Own().type);
  map.Clear();
}

KEDataIterator KEDataCache::Iterator() {
  HeldByCaller();
  return KEDataIterator(map.Begin());
}

unsigned int KEDataCache::Size() {
  HeldByCaller();
  return map.Count();
}

}  // namespace KE::Instance
