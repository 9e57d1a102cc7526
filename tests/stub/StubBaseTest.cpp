// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <stdexcept>

#include "foundation/KEHashmap.h"
#include "stub/base/KEAssocStubBase.h"
#include "stub/classes/ManagedObjectReference.h"

namespace KELib::Stub {
namespace {

class FailingLink : public KEAssocStubBase {
 public:
  using KEAssocStubBase::GetKey;
  const char* GetKey(KEString& endClassName) override {
    asked = endClassName.Cstr();
    throw std::runtime_error("no key");
  }
  const char* asked = nullptr;
};

TEST(AssocStubBase, BorrowsAClassNameAndGivesItBackEvenOnError) {
  const char name[] = "a class name in memory that is not to be freed";
  FailingLink link;
  EXPECT_THROW(link.GetKey(name), std::runtime_error);
  EXPECT_EQ(name, link.asked);
  KEAssocStubBase base;
  KEString text("a");
  for (const char* answer :
       {base.GetKey(static_cast<const char*>(nullptr)), base.GetKey(text), base.GetOriginRole(),
        base.GetResultRole(), base.GetOriginClassName(), base.GetResultClassName()}) {
    EXPECT_STREQ("", answer);
  }
  EXPECT_FALSE(base.KeyEquals("a", "a"));
  EXPECT_TRUE(base.GetAssocInstance(text) == nullptr && base.GetAssocInstance("a") == nullptr);
}

using Reference = KE::Stub::ManagedObjectReference;

TEST(ManagedObjectReference, IsItsValueWhateverTheType) {
  Reference left, right, *a = &left, *b = &right;
  left.type = "HostSystem";
  left.value = right.value = "ha-1";
  EXPECT_EQ(ComputeHash(a), ComputeHash(b));
  EXPECT_TRUE(Equals(a, b));
  right.value = "HA-1";
  EXPECT_FALSE(Equals(a, b));
}

// As filter records do.
struct Record {
  Record() { reference.value = "filter-1"; }
  Reference reference;
};

TEST(ManagedObjectReference, MayBeTheKeyOfTheRecordThatHoldsIt) {
  KEHashmap<Reference*, Record*> map;
  Record own, *last = nullptr;
  for (int i = 0; i < 2; ++i) {  // the first record's reference dies on the way
    last = new Record;
    Reference* key = &last->reference;
    map.Insert(key, last);
  }
  Reference* key = &own.reference;
  EXPECT_EQ(last, *map.Get(key));
  map.Remove((*map.Begin()).key);
  EXPECT_FALSE(map.Contains(key));
  map.Insert(key, nullptr);  // may look at the entry that lost its key
  map.Resize(1000);
  EXPECT_EQ(2u, map.Count());
  EXPECT_TRUE(map.Begin().End());
}

}  // namespace
}  // namespace KELib::Stub
