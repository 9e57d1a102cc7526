// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "InstanceFixture.h"

namespace KE::Instance {
namespace {

using KELib::KEString;
using KELib::Stub::KEStubRef;

class DataCache : public testing::Test {
 protected:
  CountedStub* File(const char* key) {
    KEString text(key);
    auto* stub = new CountedStub(alive);
    cache.SetVal(text, stub);
    return stub;
  }

  int alive = 0;
  KEDataCache cache;
};

TEST_F(DataCache, OffersWhatItFindsToAnEmptyHandle) {
  KEString key("a"), missing("A"), other("b");
  KEStubRef ref;
  cache.GetVal(key, ref);
  CountedStub* first = File("a");
  File("b");
  cache.GetVal(missing, ref);
  EXPECT_FALSE(ref.HasData());
  cache.GetVal(key, ref);
  cache.GetVal(other, ref);
  EXPECT_EQ(first, ref.GetData());
}

TEST_F(DataCache, FilingAgainReplacesTheStubAndCountsTwice) {
  File("a");
  CountedStub* second = File("a");
  EXPECT_EQ(1, alive);
  EXPECT_EQ(2u, cache.Size());
  EXPECT_EQ(second, Find(cache, "a"));
  KEString key("a");
  cache.RemoveVal(key);
  EXPECT_EQ(0, alive);
  EXPECT_EQ(nullptr, Find(cache, "a"));
}

TEST_F(DataCache, RemoveValWorksForTheHolderAndWaitsForOthers) {
  File("a");
  File("b");
  KEString key("a"), own("b"), missing("c");
  RunAgainstHolder(
      *cache.GetMutex(), [&] { cache.RemoveVal(key); },
      [&] {
        auto it = cache.Iterator();
        cache.RemoveVal(missing);
        EXPECT_FALSE(it.End());
        cache.RemoveVal(own);
        EXPECT_TRUE(it.End());
        EXPECT_EQ(nullptr, *it);
        EXPECT_TRUE(cache.GetMutex()->IsLocked());
        EXPECT_EQ(1, alive);
      });
  EXPECT_EQ(0, alive);
}

TEST_F(DataCache, IsWalkedOnceAroundAndNotAcrossGrowth) {
  for (char c = 'a'; c < 'a' + 15; ++c) File(std::string(1, c).c_str());
  auto it = cache.Iterator();
  File("z");
  EXPECT_TRUE(it.End());
  it = cache.Iterator();
  auto second = it++;
  second = it;  // within a cache an assignment moves nothing
  EXPECT_NE(it->key.Cstr(), second->key.Cstr());
  std::set<std::string> keys;
  for (auto walk = cache.Iterator(); !walk.End(); walk++) keys.insert(walk->key.Cstr());
  EXPECT_EQ(16u, keys.size());
}

}  // namespace
}  // namespace KE::Instance
