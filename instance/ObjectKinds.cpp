// SPDX-License-Identifier: MIT
#include "instance/ObjectKinds.h"

#include <cstring>

namespace KE::Instance {

namespace {

constexpr std::size_t kLast = kObjectKindCount - 1;

constexpr bool RowsAreInOrder() {
  for (std::size_t i = 0; i < kObjectKindCount; ++i) {
    if (kObjectKinds[i].Index() != i || kObjectKinds[i].IsAnyOther() != (i == kLast)) return false;
  }
  return true;
}

// Else two groups, each locked as a whole, would take their mutexes in two orders.
constexpr bool GroupsAreTogether() {
  for (const ObjectKind& kind : kObjectKinds) {
    const KindRange group = KindsOf(kind.group);
    if (&kind < group.first || &kind >= group.past) return false;
  }
  return true;
}

static_assert(RowsAreInOrder(), "a row is at its enumerator's place; the last one has no type");
static_assert(GroupsAreTogether(), "the rows of a lock group follow each other");

}  // namespace

const ObjectKind* KindOfCache(const char* cacheClass) {
  for (const ObjectKind& kind : kObjectKinds) {
    if (std::strcmp(cacheClass, kind.cacheClass) == 0) return &kind;
  }
  return nullptr;
}

std::size_t LockRank(const char* cacheClass) {
  const ObjectKind* const kind = KindOfCache(cacheClass);
  if (kind == nullptr) return kLast;
  return kind->IsAnyOther() ? kLast + 1 : kind->Index();
}

}  // namespace KE::Instance
