// SPDX-License-Identifier: MIT
#include "inventory/Differences.h"

#include "inventory/Reading.h"

namespace kecpp {
namespace {

// Calls `use` with an object of each kind, for its type.
template <class Use>
void ForEachType(const Use& use) {
  use(Host());
  use(Machine());
  use(Role());
  use(Privilege());
  use(Identity());
}

template <class Object>
void FindGone(const Connection& before, const Connection& now, std::vector<Change>& gone) {
  constexpr Kind kind = TypesOf<Object>::kKind;
  ForEachCopy<Object>(before, [&](const Object& object) {
    if (!Holds(now, kind, object.key)) gone.push_back({Change::Type::removed, kind, object.key});
  });
}

template <class Object>
void Compare(const Connection& before, const Connection& now, std::vector<Change>& differences) {
  ForEachCopy<Object>(now, [&](const Object& object) {
    const auto known = FindCopy<Object>(before, object.key);
    if (known && *known == object) return;
    const auto type = known ? Change::Type::changed : Change::Type::added;
    differences.push_back({type, TypesOf<Object>::kKind, object.key});
  });
  FindGone<Object>(before, now, differences);
}

}  // namespace

std::vector<Change> FindDifferences(const Connection& before, const Connection& now) {
  std::vector<Change> differences;
  ForEachType([&](auto type) { Compare<decltype(type)>(before, now, differences); });
  return differences;
}

std::vector<Change> FindGone(const Connection& before, const Connection& now) {
  std::vector<Change> gone;
  ForEachType([&](auto type) { FindGone<decltype(type)>(before, now, gone); });
  return gone;
}

bool Holds(const Connection& connection, Kind kind, const std::string& key) {
  bool found = false;
  LookAtStub(connection, kind, key, [&](KELib::Stub::KEStubBase&) { found = true; });
  return found;
}

}  // namespace kecpp
