// SPDX-License-Identifier: MIT
#include "http/HttpClient.h"

#include <curl/curl.h>

#include <cstdlib>
#include <thread>

#include "http/CallLimits.h"
#include "http/HttpFixture.h"
#include "http/Interrupter.h"

namespace KELib::Http {
namespace {

using HttpClientTest = HttpFixture;

TEST_F(HttpClientTest, PostsBodyAndTheFirstHeaderListAndReadsAnyReply) {
  info->AddHeader("Twice: ", "1");
  info->AddHeader("Twice: ", "2");
  info->AddHeader("Empty: ", "");
  server.Push(Reply::Status("500 Internal Server Error", "<fault/>"));
  const Outcome outcome = Post("<body/>");
  EXPECT_EQ("<fault/>", outcome.content);
  EXPECT_EQ(0, outcome.code);
  Client().GetConnectionInfo()->RemoveHeader("Twice: ");
  Post("<body/>");  // with the same handle
  ASSERT_EQ(2u, server.Requests().size());
  for (const RawServer::Request& request : server.Requests()) {
    EXPECT_EQ("<body/>", request.body);
    EXPECT_EQ(0u, request.head.find("POST /sdk HTTP/1.1\r\n")) << request.head;
    EXPECT_NE(std::string::npos, request.head.find("\r\nTwice: 1\r\nTwice: 2\r\nEmpty:\r\n"));
  }
  const std::string large(3 << 20, 'x');
  Post(large.c_str());
  EXPECT_EQ(large, server.Requests()[2].body);
  EXPECT_EQ("", server.Requests()[2].Header("Expect")) << "would wait a second for an answer";
}

TEST_F(HttpClientTest, CookiesAreCommonToAllHandlesOfTheClient) {
  server.Push(Reply::Ok("", "Set-Cookie: session=abc; Path=/\r\n"));
  Post();
  auto first = HangingPosts(1);
  Post();
  server.ReleaseHanging();
  first[0].get();
  const auto requests = server.Requests();
  EXPECT_EQ("", requests[0].Header("Cookie"));
  EXPECT_EQ("session=abc", requests[1].Header("Cookie"));
  EXPECT_EQ("session=abc", requests[2].Header("Cookie"));
}

// Without locks around the cookie store libcurl damages the heap within seconds.
TEST_F(HttpClientTest, ManyThreadsMayReceiveCookies) {
  server.SetHandler([](const RawServer::Request& request) {
    std::string cookies;
    for (int i = 0; i < 20; ++i) {
      const std::string age = i % 3 == 0 ? "0" : "99";
      cookies +=
          "Set-Cookie: c" + std::to_string(i) + "=" + request.body + "; Max-Age=" + age + "\r\n";
    }
    return Reply::Ok(request.body, cookies);
  });
  Pool().SetSize(4);
  std::vector<std::thread> threads;
  for (int number = 0; number < 4; ++number) {
    threads.emplace_back([this, number] {
      for (int i = 0; i < 400; ++i) {
        const std::string body = std::to_string(number) + "x" + std::to_string(i);
        EXPECT_EQ(body, Post(body.c_str()).content);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

TEST_F(HttpClientTest, RepliesArriveWholeHoweverTheirEndIsTold) {
  std::string large;
  for (int i = 0; i < 100000; ++i) large += static_cast<char>(1 + i % 251);
  for (const Reply& reply : {Reply::Chunked(large, 1000), Reply::Ok(large),
                             Reply::Raw("HTTP/1.0 200 OK\r\n\r\n" + large).AndClose()}) {
    server.Push(reply);
    EXPECT_EQ(large, Post().content);
  }
}

TEST_F(HttpClientTest, OversizedRepliesFailWithAReason) {
  const std::string large(50000, 'x');
  Pool().SetReplyLimit(40000);
  server.Push(Reply::Ok(large));
  const Outcome announced = Post();
  EXPECT_EQ(CURLE_WRITE_ERROR, announced.code);
  EXPECT_EQ("Reply exceeds 40000 bytes.", announced.error);
  EXPECT_EQ("", announced.content);
  server.Push(Reply::Chunked(large, 1000));
  const Outcome unannounced = Post();
  EXPECT_EQ("Reply exceeds 40000 bytes.", unannounced.error);
  EXPECT_GE(40000u, unannounced.content.size());
}

TEST_F(HttpClientTest, ATimeoutIsTheRequestsOnlyUnlessItExpired) {
  info->SetTimeout(7);
  const auto timeoutOfTheHandle = [this] {
    HttpHandleRef ref;
    Client().GetSession()->GetHandle(ref);
    return ref.handle->timeout;
  };
  for (const long long seconds : {9LL, 0LL, -1LL, 7LL}) {
    Post("", seconds);
    EXPECT_EQ(7, timeoutOfTheHandle());
  }
  server.Push(Reply::Ok("").Hanging());
  const Outcome outcome = Post("", 1);
  EXPECT_EQ(0u, outcome.thrown.find("RequestTimedOutException: "));
  EXPECT_EQ(0, outcome.code);
  EXPECT_EQ(1, timeoutOfTheHandle());
}

TEST_F(HttpClientTest, AScopeMayShortenTransfers) {
  server.Push(Reply::Ok("").Hanging());
  {
    CallLimits scope;
    scope.SetTransferLimit(20);
    EXPECT_EQ(0u, Post().thrown.find("RequestTimedOutException: "));
  }
  ASSERT_TRUE(server.WaitForRequests(1));  // a busy machine reads it late
  auto patient = HangingPosts(1);
  EXPECT_EQ(std::future_status::timeout, patient[0].wait_for(std::chrono::milliseconds(50)));
  server.ReleaseHanging();
  EXPECT_EQ("late", patient[0].get().content);
}

// libcurl looks at this limit when it is over, and about once a second from then on.
TEST_F(HttpClientTest, AScopeMayLimitTheWaitForAnAnswerButNotTheAnswer) {
  const auto post = [this](bool answers) {
    CallLimits scope;
    scope.SetAnswerLimit(20);
    Outcome outcome = Post();
    EXPECT_EQ(answers, scope.Answered());
    return outcome;
  };
  server.Push(Reply::Ok("").Hanging());
  EXPECT_EQ("RequestTimedOutException: No answer within the time limit.", post(false).thrown);
  const std::string begin = "HTTP/1.0 200 OK\r\n\r\n<a/>";
  server.Push(Reply::Raw(begin + "<b/>").Hanging(begin.size()).AndClose());
  auto begun = std::async(std::launch::async, post, true);
  EXPECT_EQ(std::future_status::timeout, begun.wait_for(std::chrono::milliseconds(1500)));
  server.ReleaseHanging();
  EXPECT_EQ("<a/><b/>", begun.get().content);
}

TEST_F(HttpClientTest, WithAllHandlesInUseAPostFailsAtOnceUnlessItMayWait) {
  const std::string busy = "HttpException: Unable to connect. Busy.";
  auto posts = HangingPosts(2);
  EXPECT_EQ(busy, Post().thrown);
  std::atomic<bool> stop{true};
  {
    CallLimits stopped(nullptr, &stop);
    stopped.SetHandleWait(60000);
    EXPECT_EQ(busy, Post().thrown);
    CallLimits brief;
    brief.SetHandleWait(10);
    EXPECT_EQ(busy, Post().thrown);
  }
  EXPECT_EQ(nullptr, CallLimits::Current());
  auto waiter = std::async(std::launch::async, [this] { return Pool().WaitForFreeHandle(-1); });
  waiter.wait_for(std::chrono::milliseconds(5));  // mostly it waits by now
  Pool().SetSize(3);
  EXPECT_TRUE(waiter.get());
  Pool().SetSize(2);
  server.Push(Reply::Ok("third"));
  auto third = std::async(std::launch::async, [this] {
    CallLimits patient;
    patient.SetHandleWait(60000);
    return Post();
  });
  server.ReleaseHanging();
  EXPECT_EQ("third", third.get().content);
}

TEST_F(HttpClientTest, AnInterrupterEndsTheTransfersOfItsScopesWithoutSendingThemAgain) {
  Interrupter interrupter;
  const auto post = [&] {
    const CallLimits outer(&interrupter);
    const CallLimits inner;
    return Post();
  };
  const auto postAside = [&](const Reply& reply) {
    const std::size_t before = server.Requests().size();
    server.Push(reply);
    auto posted = std::async(std::launch::async, post);
    EXPECT_TRUE(server.WaitForRequests(before + 1));
    return posted;
  };
  Pool().SetSize(3);
  Post();  // the next transfer would be sent again if its kept connection turned out to be dead
  auto silent = postAside(Reply::Ok("late").Hanging());
  auto endless = postAside(Reply::Raw("HTTP/1.0 200 OK\r\n\r\n<a/>").Hanging(23));
  auto others = HangingPosts(1);
  interrupter.Interrupt();
  EXPECT_GT(silent.get().code, 0);
  EXPECT_GT(endless.get().code, 0) << "a reply that ends with its connection passed for complete";
  EXPECT_EQ(CURLE_COULDNT_CONNECT, post().code);
  EXPECT_EQ(4u, server.Requests().size());
  server.ReleaseHanging();
  EXPECT_EQ("late", others[0].get().content);
  interrupter.Resume();
  server.Push(Reply::Ok("again"));
  EXPECT_EQ("again", post().content);
}

TEST_F(HttpClientTest, OnlyTheSettingsDecideAboutAProxy) {
  RawServer proxy;
  ::setenv("http_proxy", proxy.Url().c_str(), 1);
  ::setenv("no_proxy", "*", 1);
  Post();
  EXPECT_EQ(1u, server.Requests().size());
  ConnectionInfo* settings = Client().GetConnectionInfo();
  settings->SetProxyHost("127.0.0.1");
  settings->SetProxyPort(std::to_string(proxy.Port()).c_str());
  settings->EnableSettingProxy();
  Pool().SetSize(0);
  Pool().SetSize(1);
  Post();
  ASSERT_EQ(1u, proxy.Requests().size());
  EXPECT_EQ(0u, proxy.Requests()[0].head.find("POST " + server.Url("/sdk") + " "));
  ::unsetenv("http_proxy");
  ::unsetenv("no_proxy");
}

TEST_F(HttpClientTest, ASecureConnectionNeedsSslSettings) {
  info->SetProto("https");
  EXPECT_EQ("HttpException: No SSL information available for secure connection.",
            Thrown([this] { Client(); }));
  info->SetProto("http");  // still the test's own
  EXPECT_TRUE(Client().IsConnected());
  EXPECT_FALSE(HttpClientImpl().IsConnected());
  HttpSessionImpl session(nullptr);
  session.Init();
  EXPECT_FALSE(session.IsValid());
  EXPECT_THROW(Client().SaveSession(), NotImplementedException);
  EXPECT_THROW(Client().Get(nullptr, nullptr), NotImplementedException);
}

TEST(HttpServiceTest, ComesBackAfterItsRelease) {
  GetHttpService();
  ReleaseHttpService();
  ReleaseHttpService();
  EXPECT_NE(nullptr, GetHttpService());
}

}  // namespace
}  // namespace KELib::Http
