// SPDX-License-Identifier: MIT
#include "foundation/KEHashmap.h"

#include <gtest/gtest.h>

#include <map>
#include <new>
#include <random>
#include <string>
#include <vector>

#include "foundation/KEException.h"
#include "support/Counted.h"

namespace KELib {
namespace {

using Flags = KEHashmap<unsigned int, bool>;

void Fill(Flags& map, unsigned int from, unsigned int to) {
  for (unsigned int i = from; i < to; ++i) map.Insert(i, true);
}

std::vector<unsigned int> Keys(Flags& map) {
  std::vector<unsigned int> keys;
  for (auto it = map.Begin(); !it.End(); ++it) keys.push_back(it->key);
  return keys;
}

TEST(KEHashmapTest, GrowsAtItsThreshold) {
  Flags map;
  const unsigned int expected[][3] = {{15, 20, 15}, {16, 42, 31}, {32, 85, 63}};
  for (const auto& [count, buckets, threshold] : expected) {
    Fill(map, map.Count(), count);
    EXPECT_EQ(buckets, map.BucketCount());
    EXPECT_EQ(threshold, map.Threshold());
  }
  map.Clear();
  EXPECT_EQ(85u, map.BucketCount());
  EXPECT_EQ(0u, map.Count());
  EXPECT_THROW(map.Resize(4000000000u), std::bad_alloc);
  for (const float ratio : {-1.0f, 0.01f, 1e30f}) {
    Flags odd(1, ratio);
    Fill(odd, 0, 100);
    EXPECT_EQ(100u, Keys(odd).size()) << ratio;
  }
}

TEST(KEHashmapTest, ChainsBeginWithTheNewestEntryAndTurnRoundOnGrowth) {
  Flags map(2, 1.0f);
  // The third makes it 2 * 3 = 6 buckets.
  for (unsigned int key : {0u, 6u, 12u}) map.Insert(key, true);
  EXPECT_EQ((std::vector<unsigned int>{12, 0, 6}), Keys(map));

  KEEntry<unsigned int, bool>* previous = nullptr;
  unsigned int key = 0;
  EXPECT_EQ(0u, map.Lookup(key, 0, previous)->key);
  EXPECT_EQ(12u, previous->key);
  EXPECT_EQ(nullptr, map.Lookup(key, 1000, previous));
  EXPECT_EQ(nullptr, previous);
}

TEST(KEHashmapTest, APresentKeyIsFiledTwiceAndItsObjectsDieOnce) {
  int old = 0, fresh = 0;
  KEString key("key"), neighbour("other");
  KEHashmap<KEString, Counted<>*> map(1, 100.0f);  // everything in one chain
  map.Insert(key, new Counted<>(old));
  map.Insert(neighbour, new Counted<>(old));
  auto* const twice = new Counted<>(fresh);
  map.Insert(key, twice);
  map.Insert(key, twice);
  EXPECT_EQ(1, old);
  EXPECT_EQ(1, fresh);
  EXPECT_EQ(4u, map.Count());

  map.Remove(key);
  EXPECT_EQ(0, fresh);
  EXPECT_EQ(3u, map.Count());
  EXPECT_FALSE(map.Contains(key));
  EXPECT_TRUE((++map.Begin()).End());

  map.Insert(key, new Counted<>(fresh));
  EXPECT_TRUE(map.Contains(key));
  map.Clear();
  EXPECT_EQ(0, old + fresh);
}

TEST(KEHashmapIteratorTest, IsUnboundByWhateverMovesEntriesAndByNothingElse) {
  Flags map;
  unsigned int present = 7, absent = 19;
  Fill(map, 0, 3);
  auto it = map.Begin();
  Fill(map, 3, 15);
  map.Remove(absent);
  auto copy = ++it;
  EXPECT_EQ(1u, copy->key);
  Fill(map, 15, 16);
  EXPECT_TRUE(it.End());
  EXPECT_EQ(nullptr, copy.Map());
  EXPECT_TRUE((++copy).End());
  EXPECT_THROW(*copy, InvalidIteratorException);
  copy = it = map.Begin();
  map.Remove(present);
  EXPECT_TRUE(it.End() && copy.End());
  copy = map.Begin();
  Flags other;
  other.SaveIt(&copy);
  EXPECT_EQ(&other, copy.Map());
}

// Compares with a plain model under random inserts (of absent keys), removals and look-ups.
TEST(KEHashmapTest, BehavesAsAMap) {
  std::mt19937 random(42);
  std::map<std::string, int> model, walked;
  KEHashmap<KEString, int> map;
  for (int i = 0; i < 20000; ++i) {
    const std::string name = std::to_string(random() % 500);
    KEString key(name.c_str());
    if (random() % 2 == 0) {
      map.Remove(key);
      model.erase(name);
    } else if (!map.Contains(key)) {
      map.Insert(key, i);
      model[name] = i;
    }
    ASSERT_EQ(model.size(), map.Count());
  }
  for (auto it = map.Begin(); !it.End(); ++it) walked[it->key.Cstr()] = it->value;
  EXPECT_EQ(model, walked);
}

// Of two entries only owned objects vanish with the first; the key may be the entry's own.
TEST(KEHashmapTest, RemovesByAReferenceToTheEntrysOwnKey) {
  KEHashmap<KEString, bool> map;
  KEString key("a key that is long enough to live on the heap");
  map.Insert(key, true);
  map.Insert(key, false);
  map.Remove(map.Begin()->key);
  EXPECT_TRUE(map.Count() == 1 && !*map.Get(key));
  map.Remove(map.Begin()->key);
  EXPECT_EQ(0u, map.Count());
}

TEST(ElementPoliciesTest, HashesAndComparesTexts) {
  char text[] = "ab";
  char *pointer = text, *null = nullptr;
  EXPECT_EQ(3105u, ComputeHash<char*>(pointer));
  EXPECT_EQ(97u, ComputeHash<char*>(pointer, 1));
  EXPECT_FALSE(Equals<char*>(null, null) || Equals<char*>(pointer, null));
  KEString string(text);
  EXPECT_EQ(3105u, ComputeHash<KEString>(string, 1));
  EXPECT_FALSE(DeleteVal(string));
}

}  // namespace
}  // namespace KELib
