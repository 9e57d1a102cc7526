// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <stdexcept>

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
  EXPECT_STREQ("", KEAssocStubBase().GetKey(static_cast<const char*>(nullptr)));
}

TEST(ManagedObjectReference, IsItsValueWhateverTheType) {
  KE::Stub::ManagedObjectReference left, right, *a = &left, *b = &right;
  left.type = "HostSystem";
  left.value = right.value = "ha-1";
  EXPECT_EQ(ComputeHash(a), ComputeHash(b));
  EXPECT_TRUE(Equals(a, b));
  right.value = "HA-1";
  EXPECT_FALSE(Equals(a, b));
}

}  // namespace
}  // namespace KELib::Stub
