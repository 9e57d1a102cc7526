// SPDX-License-Identifier: MIT
#include "foundation/KEVector.h"

#include <gtest/gtest.h>

#include <climits>
#include <new>
#include <string>
#include <vector>

#include "foundation/KEException.h"

namespace {

using KELib::IndexOutOfBoundsException;
using KELib::InvalidIteratorException;
using KELib::KEString;
using KELib::KEVector;
using KELib::KEVectorIterator;

struct Counted {
  explicit Counted(int& counter) : deaths(counter) {}
  virtual ~Counted() { ++deaths; }
  int& deaths;
};

template <typename F>
std::string InvalidText(F use) {
  try {
    use();
  } catch (const InvalidIteratorException& e) {
    return e.What();
  }
  return "no exception";
}

TEST(KEVectorTest, GrowsBeforeItIsFull) {
  KEVector<int> vector;
  EXPECT_EQ(2u, vector.Capacity());
  std::vector<unsigned int> capacities;
  for (int i = 0; i < 4; ++i) {
    vector.Add(i);
    capacities.push_back(vector.Capacity());
  }
  EXPECT_EQ((std::vector<unsigned int>{2, 4, 4, 8}), capacities);
  EXPECT_EQ(3, vector[3]);
  EXPECT_THROW(vector.Get(4), IndexOutOfBoundsException);

  KEVector<int> single(1);
  single.Add(7);
  EXPECT_EQ(2u, single.Capacity());
}

TEST(KEVectorTest, CreatedArraysAreZeroAndBounded) {
  int* numbers = nullptr;
  unsigned int slots = 0;
  KEVector<int>::Create(0, numbers, slots);
  EXPECT_EQ(2u, slots);
  EXPECT_EQ(0, numbers[0] | numbers[1]);
  delete[] numbers;

  KEVector<KEString> texts(3);
  texts.Add(KEString("still a string in a fresh slot"));
  EXPECT_STREQ("still a string in a fresh slot", texts[0].Cstr());
  EXPECT_THROW(KEVector<long long>(UINT_MAX), std::bad_alloc);
}

TEST(KEVectorTest, AddsItsOwnElementWhileGrowing) {
  KEVector<KEString> vector;
  vector.Add(KEString("a text that is long enough to live on the heap"));
  vector.Add(vector[0]);
  vector.Add(vector[1]);
  vector.Add(vector[0]);
  for (unsigned int i = 0; i < vector.Count(); ++i) {
    EXPECT_STREQ("a text that is long enough to live on the heap", vector[i].Cstr()) << i;
  }
}

TEST(KEVectorTest, IndexOfAnAbsentValueIsBeyondCapacity) {
  KEVector<KEString> vector;
  for (const char* text : {"a", "b", "b"}) {
    vector.Add(KEString(text));
  }
  EXPECT_EQ(1u, vector.Index(KEString("b")));
  EXPECT_EQ(7u, vector.Index(KEString("c")));

  int deaths = 0;
  KEVector<Counted*> objects;
  objects.Add(new Counted(deaths));
  Counted other(deaths);
  EXPECT_EQ(0u, objects.Index(objects[0]));
  EXPECT_EQ(3u, objects.Index(&other));
}

TEST(KEVectorTest, OwnsPointersButHandsRemovedOnesBack) {
  int deaths = 0;
  {
    KEVector<Counted*> vector;
    for (int i = 0; i < 4; ++i) {
      vector.Add(new Counted(deaths));
    }
    vector.Add(nullptr);
    Counted* const second = vector[1];
    Counted* const third = vector[2];
    vector.RemoveAt(1);
    EXPECT_EQ(0, deaths);
    EXPECT_EQ(third, vector[1]);
    EXPECT_EQ(4u, vector.Count());
    EXPECT_THROW(vector.RemoveAt(4), IndexOutOfBoundsException);
    delete second;
    vector.Clear();
    EXPECT_EQ(4, deaths);
    EXPECT_EQ(8u, vector.Capacity());
    vector.Add(new Counted(deaths));
  }
  EXPECT_EQ(5, deaths);
}

// A linked object takes itself out of its partner's list while it dies.
struct Linked {
  explicit Linked(KEVector<Linked*>& owner) : list(owner) {}
  ~Linked() { seen = list.Index(this) < list.Count(); }
  KEVector<Linked*>& list;
  static bool seen;
};
bool Linked::seen = false;

TEST(KEVectorTest, ADyingElementIsNoLongerInTheVector) {
  KEVector<Linked*> list;
  list.Add(new Linked(list));
  list.Clear();
  EXPECT_FALSE(Linked::seen);
}

TEST(KEVectorIteratorTest, WalksWhileTheVectorGrows) {
  KEVector<int> vector;
  KEVectorIterator<int> it = vector.Begin();
  EXPECT_TRUE(it.End());
  for (int i = 0; i < 50; ++i) {
    vector.Add(i);
  }
  int sum = 0;
  for (; !it.End(); ++it) {
    sum += *it;
  }
  EXPECT_EQ(1225, sum);
  EXPECT_THROW(*it, IndexOutOfBoundsException);
  EXPECT_TRUE((++it).End());
}

TEST(KEVectorIteratorTest, NeverBoundIsAtItsEndButInvalidatedThrows) {
  KEVectorIterator<int> unbound;
  EXPECT_TRUE(unbound.End());
  ++unbound;

  KEVector<int> vector;
  vector.Add(1);
  vector.Add(2);
  KEVectorIterator<int> cleared = vector.Begin();
  const KEVectorIterator<int> copy = cleared++;
  EXPECT_EQ(1, *copy);
  vector.RemoveAt(0);
  EXPECT_EQ("KEVectorIterator invalid", InvalidText([&] { cleared.End(); }));
  EXPECT_EQ("KEVectorIterator invalid", InvalidText([&] { *copy; }));
  EXPECT_EQ("KEVectorIterator invalid", InvalidText([&] { ++cleared; }));
  const KEVectorIterator<int> invalidCopy(copy);
  EXPECT_THROW(invalidCopy.End(), InvalidIteratorException);
  cleared = vector.Begin();
  EXPECT_EQ(2, *cleared);
}

TEST(KEVectorIteratorTest, ManyIteratorsComeAndGoAndAllAreUnbound) {
  auto vector = std::make_unique<KEVector<int>>();
  vector->Add(1);
  std::vector<KEVectorIterator<int>> kept;
  for (int i = 0; i < 100; ++i) {
    KEVectorIterator<int> passing(*vector);
    kept.push_back(passing);  // moves of the std::vector copy and destroy registered iterators
    if (i % 3 == 0) {
      kept.erase(kept.begin());
    }
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
