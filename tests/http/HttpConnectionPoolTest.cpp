// SPDX-License-Identifier: MIT
#include "http/HttpConnectionPool.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "http/ConnectionInfo.h"
#include "http/HttpException.h"
#include "http/HttpService.h"

namespace {

using KELib::Http::ConnectionInfo;
using KELib::Http::HttpConnectionPool;
using KELib::Http::HttpException;
using KELib::Http::HttpHandle;
using KELib::Http::HttpHandleRef;
using KELib::Http::SSLInfo;

class HttpConnectionPoolTest : public testing::Test {
 protected:
  HttpConnectionPoolTest() {
    KELib::Http::GetHttpService();
    pool.Init();
  }

  // Takes a handle and gives it back, to learn which one is the lowest free one.
  HttpHandle* Lowest() {
    HttpHandleRef ref;
    pool.GetHandle(&info, ref);
    return ref.handle;
  }

  ConnectionInfo info{nullptr, "http://127.0.0.1:1/", true};
  HttpConnectionPool pool;
};

TEST_F(HttpConnectionPoolTest, TakesTheLowestFreeSlotAndLeavesTheReferenceAloneWhenBusy) {
  auto first = std::make_unique<HttpHandleRef>();
  HttpHandleRef second, third;
  pool.GetHandle(&info, *first);
  pool.GetHandle(&info, second);
  pool.GetHandle(&info, third);
  EXPECT_NE(first->handle, second.handle);
  EXPECT_EQ(nullptr, third.handle);
  EXPECT_FALSE(pool.WaitForFreeHandle(1));
  HttpHandle* lowest = first->handle;
  pool.GetHandle(&info, *first);
  EXPECT_EQ(lowest, first->handle);
  first.reset();
  pool.GetHandle(&info, third);
  EXPECT_EQ(lowest, third.handle);
  pool.FreeHandle(second.handle);
  EXPECT_TRUE(pool.WaitForFreeHandle(0));
  pool.FreeHandle(nullptr);
}

TEST_F(HttpConnectionPoolTest, ResizesUpToFourAndNeverDropsAHandleInUse) {
  pool.SetSize(5);
  EXPECT_EQ(2u, pool.GetSize());
  pool.SetSize(4);
  HttpHandleRef kept, last;
  pool.GetHandle(&info, kept);
  pool.GetHandle(&info, last);
  try {
    pool.SetSize(1);
    ADD_FAILURE() << "dropped a handle in use";
  } catch (const HttpException& e) {
    EXPECT_STREQ("Unable to resize Connection Pool. In Use.", e.What());
  }
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
  HttpHandleRef ref;
  pool.GetHandle(&info, ref);
  HttpHandle* lowest = ref.handle;
  pool.GetHandle(&info, ref);
  EXPECT_NE(lowest, ref.handle);
  EXPECT_EQ(lowest, Lowest());
  HttpConnectionPool other;
  other.Init();
  HttpHandle* second = ref.handle;
  other.GetHandle(&info, ref);
  HttpHandleRef both[2];
  pool.GetHandle(&info, both[0]);
  pool.GetHandle(&info, both[1]);
  EXPECT_EQ(second, both[1].handle);
  ref = HttpHandleRef();
}

TEST_F(HttpConnectionPoolTest, AStaleCopyDoesNotFreeAnotherThreadsHandle) {
  pool.SetSize(1);
  HttpHandleRef owner;
  {
    HttpHandleRef copy;
    pool.GetHandle(&info, copy);
    HttpHandleRef stale(copy);
    copy.Set(nullptr, nullptr);
    pool.GetHandle(&info, owner);
    EXPECT_EQ(stale.handle, owner.handle);
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
    try {
      pool.GetHandle(&secure, ref);
      ADD_FAILURE() << "accepted a certificate type";
    } catch (const KELib::InvalidArgumentException& e) {
      EXPECT_STREQ("Invalid Certificate type. Expected PEM. Got : DER", e.What());
    }
    EXPECT_EQ(nullptr, ref.handle);
  }
  HttpHandle* handle = Lowest();
  ASSERT_NE(nullptr, handle);
  EXPECT_TRUE(handle->prepared);
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
  EXPECT_EQ(0, KELib::Http::ClampTimeout(-1));
  EXPECT_EQ(2147483, KELib::Http::ClampTimeout(2147483));
  EXPECT_EQ(2147483, KELib::Http::ClampTimeout(0x7fffffffffffffffLL));
}

}  // namespace
