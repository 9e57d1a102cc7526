// SPDX-License-Identifier: MIT
#include "tools/common/CacheReader.h"

#include <algorithm>

namespace tools {
namespace {

using namespace KE::Instance;
using KELib::KEMutexGuard;
using KELib::KEString;

unsigned CountOf(KEDataCache* cache) {
  if (!cache) return 0;
  KEMutexGuard guard(cache->GetMutex());
  return cache->Size();
}

// The caller holds the mutexes of the group.
void CopyAll(KEDataCache* cache, Rows& rows) {
  if (!cache) return;
  for (KEDataIterator it = cache->Iterator(); !it.End(); ++it) rows.Add(*(*it)->value);
}

void ReadGroup(KETypeCache& cache, Group group, InventoryCopy& all) {
  std::vector<Rows*> copies;
  for (const Kind& kind : Kinds()) {
    if (kind.group == group) copies.push_back(&all.Of(kind));
  }
  for (Rows* rows : copies) rows->Expect(CountOf(FindCache(cache, rows->Type())));
  GroupLock lock(cache, group);
  for (Rows* rows : copies) CopyAll(FindCache(cache, rows->Type()), *rows);
}

}  // namespace

KEDataCache* FindCache(KETypeCache& cache, const ClassRow& type) {
  KEString name(type.name);
  return cache.GetDataCache(name);
}

GroupLock::GroupLock(KETypeCache& cache, Group group) {
  for (const ClassRow* type : ClassesOf(group)) {
    if (KEDataCache* data = FindCache(cache, *type)) guards.emplace_back(data->GetMutex());
  }
}

InventoryCopy ReadInventory(KETypeCache& cache, const std::vector<const Kind*>& kinds) {
  InventoryCopy all;
  for (const Group group : {Group::systems, Group::authorization}) {
    const bool isWanted = std::any_of(kinds.begin(), kinds.end(),
                                      [=](const Kind* kind) { return kind->group == group; });
    if (isWanted) ReadGroup(cache, group, all);
  }
  return all;
}

unsigned CountMachines(KETypeCache& cache) {
  return CountOf(FindCache(cache, *FindClass(KE::Stub::ZORBEL_VMComputerSystemClass)));
}

}  // namespace tools
