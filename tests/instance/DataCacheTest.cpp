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

TEST_F(DataCache, OffersWhatItFinds) {
  KEString key("a"), missing("A");
  KEStubRef ref;
  cache.GetVal(key, ref);
  EXPECT_FALSE(ref.HasData());
  CountedStub* first = File("a");
  File("b");
  cache.GetVal(missing, ref);
  EXPECT_FALSE(ref.HasData());
  cache.GetVal(key, ref);
  key = "b";
  cache.GetVal(key, ref);
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
  EXPECT_TRUE(cache.Iterator().End());
}

TEST_F(DataCache, RemovingEndsIteratorsAndAMissingKeyDoesNot) {
  File("a");
  File("b");
  KEString missing("c"), key("a");
  auto it = cache.Iterator();
  cache.RemoveVal(missing);
  EXPECT_FALSE(it.End());
  cache.RemoveValNoLock(key);
  EXPECT_TRUE(it.End());
  EXPECT_EQ(nullptr, *it);
  EXPECT_EQ(1, alive);
}

TEST_F(DataCache, RemoveValWorksForTheHolderAndWaitsForOthers) {
  File("a");
  File("b");
  KEString key("a"), other("b");
  bool seen = false;
  RunAgainstHolder(
      *cache.GetMutex(), [&] { cache.RemoveVal(key); },
      [&] {
        cache.RemoveVal(other);
        EXPECT_TRUE(cache.GetMutex()->IsLocked());
        seen = Find(cache, "a") != nullptr;
      });
  EXPECT_TRUE(seen);
  EXPECT_EQ(0, alive);
}

TEST_F(DataCache, GrowsWithTheSixteenthStub) {
  for (char c = 'a'; c < 'a' + 15; ++c) File(std::string(1, c).c_str());
  auto it = cache.Iterator();
  EXPECT_FALSE(it.End());
  File("z");
  EXPECT_TRUE(it.End());
  std::set<std::string> keys;
  for (it = cache.Iterator(); !it.End(); ++it) keys.insert(it->key.Cstr());
  EXPECT_EQ(16u, keys.size());
}

TEST_F(DataCache, AnIteratorCopiedWithinACacheKeepsItsPosition) {
  File("a");
  File("b");
  auto first = cache.Iterator();
  auto second = first++;
  EXPECT_NE(first->value, second->value);
  const auto* entry = *first;
  second = first;
  EXPECT_NE(entry, *second);
  KEDataIterator unbound;
  EXPECT_TRUE(unbound.End());
  unbound = first;
  EXPECT_EQ(entry, *unbound);
  ++first;
  EXPECT_TRUE(first++.End());
  EXPECT_EQ(nullptr, *first);
}

}  // namespace
}  // namespace KE::Instance
