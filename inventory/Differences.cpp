// SPDX-License-Identifier: MIT
#include "inventory/Differences.h"

#include "inventory/Reading.h"

namespace kecpp {
namespace {

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
  Compare<Host>(before, now, differences);
  Compare<Machine>(before, now, differences);
  Compare<Role>(before, now, differences);
  Compare<Privilege>(before, now, differences);
  Compare<Identity>(before, now, differences);
  return differences;
}

std::vector<Change> FindGone(const Connection& before, const Connection& now) {
  std::vector<Change> gone;
  FindGone<Host>(before, now, gone);
  FindGone<Machine>(before, now, gone);
  FindGone<Role>(before, now, gone);
  FindGone<Privilege>(before, now, gone);
  FindGone<Identity>(before, now, gone);
  return gone;
}

bool Holds(const Connection& connection, Kind kind, const std::string& key) {
  bool found = false;
  LookAtStub(connection, kind, key, [&](KELib::Stub::KEStubBase&) { found = true; });
  return found;
}

}  // namespace kecpp
