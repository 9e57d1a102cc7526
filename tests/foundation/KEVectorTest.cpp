// SPDX-License-Identifier: MIT
#include "foundation/KEVector.h"

#include <gtest/gtest.h>

#include <climits>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include "support/Counted.h"
#include "support/Thrown.h"

namespace KELib {
namespace {

TEST(KEVectorTest, GrowsBeforeItIsFull) {
  KEVector<int> vector;
  EXPECT_EQ(2u, vector.Capacity());
  for (const unsigned int capacity : {2u, 4u, 4u, 8u}) {
    vector.Add(3);
    EXPECT_EQ(capacity, vector.Capacity());
  }
  EXPECT_EQ(3, vector[3]);
  EXPECT_THROW(vector.Get(4), IndexOutOfBoundsException);
  EXPECT_THROW(std::as_const(vector).Get(4), IndexOutOfBoundsException);
  EXPECT_THROW(KEVector<long long>(UINT_MAX), std::bad_alloc);
}

TEST(KEVectorTest, AddsItsOwnElementWhileGrowing) {
  const KEString text("a text that is long enough to live on the heap");
  KEVector<KEString> vector;
  vector.Add(text);
  for (unsigned int i = 0; i < 3; ++i) vector.Add(vector[i]);
  EXPECT_STREQ(text.Cstr(), vector[0].Cstr());
  EXPECT_STREQ(text.Cstr(), vector[3].Cstr());
}

TEST(KEVectorTest, IndexOfAnAbsentValueIsBeyondCapacity) {
  KEVector<KEString> vector;
  for (const char* text : {"a", "b", "b"}) vector.Add(KEString(text));
  EXPECT_EQ(1u, vector.Index(KEString("b")));
  EXPECT_EQ(7u, vector.Index(KEString("c")));
}

TEST(KEVectorTest, OwnsPointersButHandsRemovedOnesBack) {
  int alive = 0;
  {
    KEVector<Counted<>*> vector;
    for (int i = 0; i < 4; ++i) vector.Add(new Counted<>(alive));
    vector.Add(nullptr);
    const std::unique_ptr<Counted<>> second(vector[1]);
    Counted<>* const third = vector[2];
    vector.RemoveAt(1);
    EXPECT_EQ(third, vector[1]);
    EXPECT_EQ(4u, vector.Count());
    EXPECT_THROW(vector.RemoveAt(4), IndexOutOfBoundsException);
    vector.Clear();
    EXPECT_EQ(1, alive);
    EXPECT_EQ(8u, vector.Capacity());
    vector.Add(new Counted<>(alive));
  }
  EXPECT_EQ(0, alive);
}

TEST(KEVectorIteratorTest, WalksWhileTheVectorGrows) {
  KEVector<int> vector;
  KEVectorIterator<int> it = vector.Begin();
  EXPECT_TRUE(it.End());
  for (int i = 0; i < 50; ++i) vector.Add(i);
  for (int i = 0; i < 50; ++i, ++it) EXPECT_EQ(i, *it);
  EXPECT_TRUE(it.End());
  EXPECT_THROW(*it, IndexOutOfBoundsException);
}

TEST(KEVectorIteratorTest, NeverBoundIsAtItsEndButInvalidatedThrows) {
  EXPECT_TRUE(KEVectorIterator<int>().End());
  const std::string invalid = "InvalidIteratorException: KEVectorIterator invalid";
  KEVector<int> vector;
  vector.Add(1);
  vector.Add(2);
  KEVectorIterator<int> it = vector.Begin();
  const KEVectorIterator<int> copy = it++;
  EXPECT_EQ(1, *copy);
  vector.RemoveAt(0);
  EXPECT_EQ(invalid, Thrown([&] { it.End(); }));
  EXPECT_EQ(invalid, Thrown([&] { ++it; }));
  EXPECT_EQ(invalid, Thrown([&] { *copy; }));
  it = vector.Begin();
  EXPECT_EQ(2, *it);
  KEVector<int> other;
  other.Add(3);
  other.SaveIt(&it);
  EXPECT_EQ(3, *it);
}

TEST(KEVectorIteratorTest, ManyIteratorsComeAndGoAndAllAreUnbound) {
  auto vector = std::make_unique<KEVector<int>>();
  vector->Add(1);
  std::vector<KEVectorIterator<int>> kept;
  for (int i = 0; i < 100; ++i) {
    KEVectorIterator<int> passing(*vector);
    kept.push_back(passing);  // moves of the std::vector copy and destroy registered iterators
    if (i % 3 == 0) kept.erase(kept.begin());
  }
  KEVector<int> other;
  kept[0] = other.Begin();
  vector.reset();
  EXPECT_TRUE(kept[0].End());
  for (std::size_t i = 1; i < kept.size(); ++i) {
    EXPECT_THROW(kept[i].End(), InvalidIteratorException);
  }
}

}  // namespace
}  // namespace KELib
