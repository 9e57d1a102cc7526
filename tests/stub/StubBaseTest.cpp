// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>

#include "stub/base/KEAssocStubBase.h"
#include "stub/base/KEStubRef.h"
#include "stub/base/MRawStub.h"
#include "stub/classes/ManagedObjectReference.h"
#include "stub/classes/TaskInfo.h"

namespace KELib::Stub {
namespace {

TEST(StubBase, StubsWithoutAnswersGiveEmptyOnes) {
  KEString any("ZORBEL_HostedDependency");
  KEAssocStubBase link;
  for (KEStubBase* made :
       {CreateRawStub(), KE::Stub::CreateTaskInfo(), KE::Stub::CreateManagedObjectReference()}) {
    const std::unique_ptr<KEStubBase> stub(made);
    EXPECT_STREQ("", stub->GetStubClassName());
    EXPECT_TRUE(stub->GetAssocIterator(any).End());
  }
  EXPECT_STREQ("", link.GetOriginRole());
  EXPECT_STREQ("", link.GetKey("Name"));
  EXPECT_FALSE(link.KeyEquals("", ""));
  EXPECT_EQ(nullptr, link.GetAssocInstance(any));
}

TEST(StubBase, DeletersAcceptNull) {
  EXPECT_TRUE(DeleteVal<KEStubBase>(static_cast<KEStubBase*>(nullptr)));
  EXPECT_TRUE(DeleteVal<KEAssocStubBase>(static_cast<KEAssocStubBase*>(nullptr)));
  KE::Stub::DeleteManagedObjectReference(nullptr);
}

TEST(StubRef, KeepsTheFirstStubOffered) {
  KEStubBase first, second;
  KEStubRef ref;
  ref.SetData(nullptr);
  EXPECT_FALSE(ref.HasData());
  ref.SetData(&first);
  ref.SetData(&second);
  ref.SetData(nullptr);
  EXPECT_EQ(&first, ref.GetData());
}

// Keeps what it is asked, to see whose characters they are; optionally fails.
class AskedLink : public KEAssocStubBase {
 public:
  using KEAssocStubBase::GetKey;
  const char* GetKey(KEString& endClassName) override {
    asked = endClassName.Cstr();
    if (fails) throw std::runtime_error("no key");
    return "Name";
  }
  const char* asked = nullptr;
  bool fails = false;
};

TEST(AssocStubBase, BorrowsAClassNameAndGivesItBackEvenOnError) {
  const char name[] = "a class name in memory that is not to be freed";
  AskedLink link;
  EXPECT_STREQ("Name", link.GetKey(name));
  EXPECT_EQ(name, link.asked);
  EXPECT_STREQ("Name", link.GetKey(static_cast<const char*>(nullptr)));
  link.fails = true;
  EXPECT_THROW(link.GetKey(name), std::runtime_error);
}

TEST(ManagedObjectReference, IsItsValueWhateverTheType) {
  KEString host("HostSystem"), folder("Folder"), id("ha-1");
  using Reference = KE::Stub::ManagedObjectReference;
  const std::unique_ptr<Reference> left(KE::Stub::CreateManagedObjectReference(host, id));
  const std::unique_ptr<Reference> right(KE::Stub::CreateManagedObjectReference(folder, id));
  Reference* a = left.get();
  Reference* b = right.get();
  EXPECT_STREQ("ha-1", id.Cstr());
  EXPECT_EQ(ComputeHash(a), ComputeHash(b));
  EXPECT_TRUE(Equals(a, b));
  b->value = "HA-1";
  EXPECT_FALSE(Equals(a, b));
}

}  // namespace
}  // namespace KELib::Stub
