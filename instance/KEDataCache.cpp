// SPDX-License-Identifier: MIT
#include "instance/KEDataCache.h"

#include "foundation/KEMutexGuard.h"

namespace KE::Instance {

using KELib::KEString;
using KELib::Stub::KEStubBase;

KEDataCache::KEDataCache() : mutex(std::make_unique<KELib::KEMutex>()) {}

KEDataCache::~KEDataCache() = default;

KELib::KEMutex* KEDataCache::GetMutex() {
  return mutex.get();
}

void KEDataCache::GetVal(KEString& key, KELib::Stub::KEStubRef& ref) {
  if (KEStubBase** found = map.Get(key)) ref.SetData(*found);
}

void KEDataCache::SetVal(KEString& key, KEStubBase* stub) {
  map.Insert(key, stub);
}

void KEDataCache::RemoveVal(KEString& key) {
  KELib::KEMutexGuard guard(mutex.get());
  RemoveValNoLock(key);
}

void KEDataCache::RemoveValNoLock(KEString& key) {
  map.Remove(key);
}

void KEDataCache::ClearNoLock() {
  map.Clear();
}

KEDataIterator KEDataCache::Iterator() {
  return KEDataIterator(map.Begin());
}

unsigned int KEDataCache::Size() {
  return map.Count();
}

}  // namespace KE::Instance
