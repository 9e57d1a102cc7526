// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>

#include "InstanceFixture.h"
#include "instance/CacheWalk.h"

namespace KE::Instance {
namespace {

using KELib::KEString;

TEST(DataCache, FilesFindsAndRemovesByTheExactKey) {
  int alive = 0;
  KEDataCache cache;
  KEString key("a"), other("b"), missing("A");
  CountedStub* second = nullptr;
  for (int i = 0; i < 2; ++i) cache.SetVal(key, second = new CountedStub(alive));
  EXPECT_EQ(1, alive);
  EXPECT_EQ(2u, cache.Size());  // filed twice, counted twice
  cache.SetVal(other, new CountedStub(alive));
  KELib::Stub::KEStubRef ref;
  cache.GetVal(missing, ref);
  EXPECT_FALSE(ref.HasData());
  cache.GetVal(key, ref);
  cache.GetVal(other, ref);  // a handle that has a stub keeps it
  EXPECT_EQ(second, ref.GetData());

  KELib::KEMutexGuard guard(cache.GetMutex());
  auto it = cache.Iterator();
  cache.RemoveVal(missing);
  EXPECT_FALSE(it.End());
  cache.RemoveVal(key);
  EXPECT_TRUE(it.End());
  EXPECT_EQ(nullptr, *it);
  EXPECT_TRUE(cache.GetMutex()->IsLocked());
  EXPECT_EQ(1, alive);
}

TEST(DataCache, AWalkMeetsWhatStaysExactlyOnceWhateverComesAndGoes) {
  constexpr int kStay = 500;
  KEDataCache cache;
  const auto file = [&cache](const std::string& name) {
    KEString key(name.c_str());
    auto* stub = new KELib::Stub::KEStubBase;
    cache.SetVal(key, stub);
    return stub;
  };
  std::map<KELib::Stub::KEStubBase*, int> met;
  for (int i = 0; i < kStay; ++i) met[file("stays" + std::to_string(i))] = 0;
  CacheWalk walk;
  std::vector<KELib::Stub::KEStubBase*> piece;
  int filed = 0;
  for (std::size_t most = 1; walk.Next(cache, most, piece); most = most % 3 + 1) {
    EXPECT_LE(piece.size(), most);
    for (auto* stub : piece) {
      if (met.count(stub) > 0) ++met[stub];
    }
    for (int i = 0; filed < 4000 && i < 50; ++i) file("new" + std::to_string(filed++));  // it grows
    KEString gone(("new" + std::to_string(filed - 1)).c_str());
    cache.RemoveVal(gone);
  }
  EXPECT_GT(filed, kStay);
  for (const auto& [stub, times] : met) EXPECT_EQ(times, 1);
  EXPECT_TRUE(walk.AtEnd());
  EXPECT_FALSE(walk.Next(cache, 3, piece));
}

TEST(DataCache, IsWalkedOnceAroundAndNotAcrossGrowth) {
  KEDataCache cache;
  const auto file = [&cache](char name) {
    KEString key(std::string(1, name).c_str());
    cache.SetVal(key, new KELib::Stub::KEStubBase);
  };
  for (char name = 'a'; name < 'a' + 15; ++name) file(name);
  auto it = cache.Iterator();
  file('z');
  EXPECT_TRUE(it.End());
  it = cache.Iterator();
  auto second = it++;
  second = it;  // within a cache an assignment moves nothing
  EXPECT_NE(it->key.Cstr(), second->key.Cstr());
  KEDataCache other;
  EXPECT_TRUE((second = other.Iterator()).End());
  std::set<std::string> keys;
  for (auto walk = cache.Iterator(); !walk.End(); walk++) keys.insert(walk->key.Cstr());
  EXPECT_EQ(16u, keys.size());
}

}  // namespace
}  // namespace KE::Instance
