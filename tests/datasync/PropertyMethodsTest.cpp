// SPDX-License-Identifier: MIT
#include "datasync/SyncFixture.h"

namespace KE::Service {
namespace {

using KELib::SystemException;

class PropertyMethodsTest : public SyncFixture {
 protected:
  static constexpr const char* kMethod = "RetrieveAllPermissions";
  static constexpr const char* kMethodOnly =
      "_m_ RetrieveAllPermissions _co_ Zorbel_Role Zorbel_Identity";

  static FakeServer::Answer Permission(const std::string& principal) {
    return FakeServer::Text("<returnval><principal>" + principal + "</principal></returnval>");
  }
};

// Without a filter nothing would end a wait, so the first cycle does not begin one.
TEST_F(PropertyMethodsTest, MethodsAloneFillTheirCachesAtOnce) {
  CountingWaiter waiter;
  server.Always(kMethod, Permission("ann"));
  Stub::ManagedObjectReference* reference = Watch(kMethodOnly, &waiter);
  EXPECT_EQ(Caches(), "identity ann\n");
  EXPECT_EQ(waiter.signals, 1);
  EXPECT_TRUE(Status().firstFillDone);
  EXPECT_STREQ(reference->type.Cstr(), "PropertyMethod");
  EXPECT_EQ(reference->value.Cstr(), std::string("root/") + kMethod);
  EXPECT_EQ(server.Calls(kMethod)[0].type + " " + server.Calls(kMethod)[0].value, "Folder root");
  EXPECT_EQ(server.Count("CreateFilter"), 0u);

  EXPECT_EQ(Watch(kMethodOnly, &waiter), reference);
  EXPECT_EQ(waiter.signals, 2);
  sync->StopDataSync(reference);
  EXPECT_EQ(Caches(), "");
  server.FeedError(SystemException("RequestCanceled"));
  AwaitLoopEnd();
}

TEST_F(PropertyMethodsTest, AnAnswerIsNoFirstFillOfAFilter) {
  server.Always(kMethod, Permission("ann"));
  server.FeedError(KELib::RequestTimedOutException("slow"));
  Watch(kRoles);
  EXPECT_EQ(Caches(), "identity ann\n");
  EXPECT_FALSE(Status().firstFillDone);
}

TEST_F(PropertyMethodsTest, AFailingMethodIsAFailedCycle) {
  server.Feed(UpdateSet("1", "filter-1"));
  Watch(kRoles);
  server.AwaitQuietWait(2);
  server.Then(kMethod, FakeServer::Throw(SystemException("Busy")));
  unsigned long long seen = Status().setsApplied;
  server.Feed(UpdateSet("2", "filter-1"));
  server.AwaitQuietWait(3);
  EXPECT_EQ(Status().consecutiveFailures, 1u);
  EXPECT_STREQ(Status().lastFailure.Cstr(), "Busy");
  EXPECT_EQ(LastVersion(), "2");
  // Its next answer is a change of its own.
  EXPECT_TRUE(sync->WaitForChange(seen, 0));
  server.Always(kMethod, Permission("bob"));
  server.FeedError(KELib::RequestTimedOutException("slow"));
  EXPECT_TRUE(sync->WaitForChange(seen, 0));
  EXPECT_EQ(Caches(), "identity bob\n");
}

// Stubs go with the last watch that names their cache, and not before.
TEST_F(PropertyMethodsTest, CachesThatAreStillNamedKeepTheirStubs) {
  server.Always(kMethod, Permission("ann"));
  Stub::ManagedObjectReference* all = Watch(kMethodOnly);
  Stub::ManagedObjectReference* more =
      Watch("_m_ RetrieveAllPermissions Other _co_ Zorbel_Identity");
  EXPECT_STREQ(more->value.Cstr(), "root/RetrieveAllPermissions,Other");
  sync->StopDataSync(all);
  EXPECT_EQ(Caches(), "identity ann\n");
  sync->StopDataSync(more);
  EXPECT_EQ(Caches(), "");
}

TEST_F(PropertyMethodsTest, AnAnswerThatComesAfterTheStopIsDropped) {
  server.Then(kMethod, Permission("ann"));
  Stub::ManagedObjectReference* reference = Watch(kMethodOnly);
  server.AwaitQuietWait(1);
  server.Then(kMethod, [&] {
    sync->StopDataSync(reference);
    return Permission("late")();
  });
  server.FeedError(KELib::RequestTimedOutException("x"));
  AwaitLoopEnd();
  EXPECT_EQ(Caches(), "");
}

}  // namespace
}  // namespace KE::Service
