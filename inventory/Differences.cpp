// SPDX-License-Identifier: MIT
#include "inventory/Differences.h"

#include "inventory/Reading.h"

namespace kecpp {
namespace {

template <Kind kind>
void Compare(const Connection& before, const Connection& now, std::vector<Change>& differences) {
  using Copy = typename Stubs<kind>::Copy;
  ForEachCopy<kind>(now, [&](const Copy& object) {
    const auto known = FindCopy<kind>(before, object.key);
    if (known && *known == object) return;
    const auto type = known ? Change::Type::changed : Change::Type::added;
    differences.push_back({type, kind, object.key});
  });
  ForEachCopy<kind>(before, [&](const Copy& object) {
    if (Holds(now, kind, object.key)) return;
    differences.push_back({Change::Type::removed, kind, object.key});
  });
}

}  // namespace

std::vector<Change> FindDifferences(const Connection& before, const Connection& now) {
  std::vector<Change> differences;
  Compare<Kind::host>(before, now, differences);
  Compare<Kind::machine>(before, now, differences);
  Compare<Kind::role>(before, now, differences);
  Compare<Kind::privilege>(before, now, differences);
  Compare<Kind::identity>(before, now, differences);
  return differences;
}

bool Holds(const Connection& connection, Kind kind, const std::string& key) {
  bool found = false;
  LookAtStub(connection, kind, key, [&](KELib::Stub::KEStubBase&) { found = true; });
  return found;
}

}  // namespace kecpp
