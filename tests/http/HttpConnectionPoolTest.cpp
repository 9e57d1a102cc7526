// SPDX-License-Identifier: MIT
#include "http/HttpConnectionPool.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "http/ConnectionInfo.h"
#include "http/HttpException.h"
#include "http/HttpService.h"
#include "support/Thrown.h"

namespace KELib::Http {
namespace {

class HttpConnectionPoolTest : public testing::Test {
 protected:
  HttpConnectionPoolTest() {
    GetHttpService();
    pool.Init();
  }

  HttpHandle* Take(HttpHandleRef& ref) {
    pool.GetHandle(&info, ref);
    return ref.handle;
  }

  // Takes a handle and gives it back, to learn which one is the lowest free one.
  HttpHandle* Lowest() {
    HttpHandleRef ref;
    return Take(ref);
  }

  ConnectionInfo info{nullptr, "http://127.0.0.1:1/", true};
  HttpConnectionPool pool;
};

TEST_F(HttpConnectionPoolTest, TakesTheLowestFreeSlotAndLeavesTheReferenceAloneWhenBusy) {
  auto first = std::make_unique<HttpHandleRef>();
  HttpHandleRef second, third;
  HttpHandle* const lowest = Take(*first);
  EXPECT_NE(lowest, Take(second));
  EXPECT_EQ(nullptr, Take(third));
  EXPECT_FALSE(pool.WaitForFreeHandle(1));
  EXPECT_EQ(lowest, Take(*first));
  first.reset();
  EXPECT_EQ(lowest, Take(third));
  pool.FreeHandle(second.handle);
  EXPECT_TRUE(pool.WaitForFreeHandle(0));
  pool.FreeHandle(nullptr);
}

TEST_F(HttpConnectionPoolTest, ResizesUpToFourAndNeverDropsAHandleInUse) {
  pool.SetSize(5);
  EXPECT_EQ(2u, pool.GetSize());
  pool.SetSize(4);
  HttpHandleRef kept, last;
  Take(kept);
  Take(last);
  EXPECT_EQ("HttpException: Unable to resize Connection Pool. In Use.",
            Thrown([this] { pool.SetSize(1); }));
  EXPECT_EQ(4u, pool.GetSize());
  pool.SetSize(2);
  pool.FreeHandle(last.handle);
  pool.SetSize(1);
  EXPECT_EQ(1u, pool.GetSize());
  EXPECT_EQ(nullptr, Lowest());
  pool.FreeHandle(kept.handle);
  EXPECT_EQ(kept.handle, Lowest());
}

TEST_F(HttpConnectionPoolTest, TakingAnotherHandleGivesTheHeldOneBack) {
  HttpHandleRef ref, both[2];
  HttpHandle* const lowest = Take(ref);
  HttpHandle* const second = Take(ref);
  EXPECT_NE(lowest, second);
  EXPECT_EQ(lowest, Lowest());
  HttpConnectionPool other;
  other.Init();
  other.GetHandle(&info, ref);
  Take(both[0]);
  EXPECT_EQ(second, Take(both[1]));
  ref = HttpHandleRef();
}

TEST_F(HttpConnectionPoolTest, AStaleCopyDoesNotFreeAnotherThreadsHandle) {
  pool.SetSize(1);
  HttpHandleRef owner;
  {
    HttpHandleRef copy;
    Take(copy);
    HttpHandleRef stale(copy);
    copy.Set(nullptr, nullptr);
    EXPECT_EQ(stale.handle, Take(owner));
  }
  EXPECT_EQ(nullptr, Lowest());
  HttpHandleRef dangling(owner);
  pool.FreeHandle(owner.handle);
  pool.SetSize(0);  // `dangling` and `owner` must not look at the deleted handle
}

TEST_F(HttpConnectionPoolTest, AHandleThatCouldNotBePreparedStaysFreeAndIsPreparedLater) {
  pool.SetSize(1);
  ConnectionInfo secure(new SSLInfo("c", "", "k", "a", "DER"), "https://h", true);
  for (int attempt = 0; attempt < 2; ++attempt) {
    HttpHandleRef ref;
    EXPECT_EQ("InvalidArgumentException: Invalid Certificate type. Expected PEM. Got : DER",
              Thrown([&] { pool.GetHandle(&secure, ref); }));
    EXPECT_EQ(nullptr, ref.handle);
  }
  ASSERT_NE(nullptr, Lowest());
  EXPECT_TRUE(Lowest()->prepared);
}

TEST_F(HttpConnectionPoolTest, WithoutAShareNoHandleCanBeMade) {
  HttpConnectionPool unready;
  EXPECT_THROW(unready.SetSize(1), HttpException);
  pool.Release();
  EXPECT_EQ(0u, pool.GetSize());
  EXPECT_EQ(nullptr, Lowest());
  pool.Init();
  EXPECT_NE(nullptr, Lowest());
}

TEST(HttpHandleTest, ClampsTheTimeoutToWhatFitsInMilliseconds) {
  EXPECT_EQ(0, ClampTimeout(-1));
  EXPECT_EQ(2147483, ClampTimeout(2147483));
  EXPECT_EQ(2147483, ClampTimeout(0x7fffffffffffffffLL));
}

}  // namespace
}  // namespace KELib::Http
