// SPDX-License-Identifier: MIT
//
// A raw server and a client that talks to it.
#ifndef KECPP_TESTS_HTTP_HTTPFIXTURE_H
#define KECPP_TESTS_HTTP_HTTPFIXTURE_H

#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <string>
#include <vector>

#include "http/ConnectionInfo.h"
#include "http/HttpClient.h"
#include "http/HttpService.h"
#include "support/RawServer.h"
#include "support/Thrown.h"

namespace KELib::Http {

class HttpFixture : public testing::Test {
 protected:
  // What a post came to.
  struct Outcome {
    int code;
    std::string error;  // of the response
    std::string content;
    std::string thrown;  // as Thrown() says
  };

  HttpFixture() : info(new ConnectionInfo(nullptr, server.Url("/sdk").c_str(), true)) {}

  // The client of `info`, made at its first use, so that a test can change the settings before.
  HttpClientImpl& Client() {
    if (client == nullptr) {
      HttpClient* const made = GetHttpService()->CreateHttpClient(info.get());
      info.release();  // a client owns its settings
      client.reset(dynamic_cast<HttpClientImpl*>(made));
    }
    return *client;
  }

  HttpConnectionPool& Pool() { return *Client().GetSession()->GetPool(); }

  Outcome Post(const char* body = "<a/>", long long timeout = -1) {
    HttpRequest request{KEString(body)};
    request.SetTimeout(timeout);
    HttpResponse response;
    const std::string thrown = Thrown([&] { Client().Post(&request, &response); });
    return {response.GetErrorCode(), response.GetErrorString().Cstr(), response.GetContent().Cstr(),
            thrown};
  }

  // On a thread of its own. The client exists already.
  std::future<Outcome> PostAside() {
    Client();
    return std::async(std::launch::async, [this] { return Post(); });
  }

  // Posts that hang until the server lets them go, when all have arrived there.
  std::vector<std::future<Outcome>> HangingPosts(std::size_t count) {
    std::vector<std::future<Outcome>> posts;
    const std::size_t before = server.Requests().size();
    for (std::size_t i = 0; i < count; ++i) {
      server.Push(Reply::Ok("late").Hanging());
      posts.push_back(PostAside());
    }
    EXPECT_TRUE(server.WaitForRequests(before + count));
    return posts;
  }

  RawServer server;
  std::unique_ptr<ConnectionInfo> info;
  std::unique_ptr<HttpClientImpl> client;
};

}  // namespace KELib::Http

#endif
