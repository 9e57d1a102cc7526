// SPDX-License-Identifier: MIT
//
// A raw server and a client that talks to it.
#ifndef KECPP_TESTS_HTTP_HTTPFIXTURE_H
#define KECPP_TESTS_HTTP_HTTPFIXTURE_H

#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <string>

#include "http/ConnectionInfo.h"
#include "http/HttpClient.h"
#include "http/HttpService.h"
#include "support/RawServer.h"

class HttpFixture : public testing::Test {
 protected:
  // What a post came to.
  struct Outcome {
    int code = 0;
    std::string error;  // of the response, or the text of what was thrown
    std::string content;
    std::string thrown;  // "", "time-out", "http" or "other"
  };

  HttpFixture() : info(NewInfo(server.Url("/sdk").c_str())) {}
  ~HttpFixture() override { delete info; }  // settings that no client took over

  static KELib::Http::ConnectionInfo* NewInfo(const char* url) {
    return new KELib::Http::ConnectionInfo(nullptr, url, true);
  }

  // The client of `info`, made at its first use, so that a test can change the settings before.
  KELib::Http::HttpClientImpl& Client() {
    if (client == nullptr) {
      client.reset(dynamic_cast<KELib::Http::HttpClientImpl*>(
          KELib::Http::GetHttpService()->CreateHttpClient(info)));
      info = nullptr;
    }
    return *client;
  }

  Outcome Post(const char* body = "<a/>", long long timeout = -1, unsigned int sizeLimit = 0) {
    KELib::Http::HttpRequest request{KELib::KEString(body)};
    request.SetTimeout(timeout);
    KELib::Http::HttpResponse response;
    if (sizeLimit > 0) Client().GetSession()->GetPool()->SetReplyLimit(sizeLimit);
    Outcome outcome;
    try {
      Client().Post(&request, &response);
      outcome.error = response.GetErrorString().Cstr();
    } catch (const KELib::RequestTimedOutException& e) {
      outcome.thrown = "time-out";
      outcome.error = e.What();
    } catch (const KELib::Http::HttpException& e) {
      outcome.thrown = "http";
      outcome.error = e.What();
    }
    outcome.code = response.GetErrorCode();
    outcome.content = response.GetContent().Cstr();
    return outcome;
  }

  // On a thread of its own. The client exists already.
  std::future<Outcome> PostAside() {
    Client();
    return std::async(std::launch::async, [this] { return Post(); });
  }

  RawServer server;
  KELib::Http::ConnectionInfo* info;
  std::unique_ptr<KELib::Http::HttpClientImpl> client;
};

#endif
