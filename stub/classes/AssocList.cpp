// SPDX-License-Identifier: MIT
#include "stub/classes/AssocList.h"

#include <vector>

namespace KE::Stub {

using KELib::Stub::KEAssocStubBase;

namespace {

void Pack(AssocVector& list) {
  std::vector<KEAssocStubBase*> links;
  links.reserve(list.Count());
  for (unsigned int i = 0; i < list.Count(); ++i) {
    if (list[i] != nullptr) links.push_back(list[i]);
    list[i] = nullptr;
  }
  list.Clear();
  for (KEAssocStubBase* link : links) list.Add(link);
}

bool IsMostlyEmpty(AssocVector& list) {
  unsigned int empty = 0;
  for (unsigned int i = 0; i < list.Count(); ++i) empty += list[i] == nullptr ? 1 : 0;
  return empty > list.Count() / 2;
}

}  // namespace

unsigned int PositionOf(AssocVector& list, KEAssocStubBase* link, unsigned int hint) {
  if (hint >= list.Count()) hint = list.Count() - 1;
  for (unsigned int i = hint; i < list.Count(); --i) {  // ends when it wraps below 0
    if (list[i] == link) return i;
  }
  return list.Index(link);
}

bool Prepare(AssocList& list) {
  if (list == nullptr) list = std::make_unique<AssocVector>(2);
  const bool growsLong = list->Capacity() >= kLongList && list->Count() + 1 >= list->Capacity();
  if (!growsLong || !IsMostlyEmpty(*list)) return false;
  Pack(*list);
  return true;
}

}  // namespace KE::Stub
