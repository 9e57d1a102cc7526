// SPDX-License-Identifier: MIT
//
// Every option that the transfer library may refuse, and how that is reported.
#include <curl/curl.h>
#include <dlfcn.h>

#include <atomic>
#include <cstdarg>
#include <fstream>
#include <string>

#include "http/HttpException.h"
#include "http/HttpFixture.h"

namespace {

std::atomic<int> refusedOption{-1};

using SetOption = CURLcode (*)(CURL*, CURLoption, ...);

}  // namespace

// Takes the place of the transfer library's function in this executable. The option is an int here,
// as it is passed, because va_start must not name a parameter that would be promoted.
extern "C" CURLcode SetOptionUnlessRefused(CURL* easy, int option, ...) __asm__("curl_easy_setopt");

CURLcode SetOptionUnlessRefused(CURL* easy, int option, ...) {
  static const auto original = reinterpret_cast<SetOption>(dlsym(RTLD_NEXT, "curl_easy_setopt"));
  if (option == refusedOption) return CURLE_OUT_OF_MEMORY;
  va_list arguments;
  va_start(arguments, option);
  void* value = va_arg(arguments, void*);  // as wide as a long
  va_end(arguments);
  return original(easy, static_cast<CURLoption>(option), value);
}

namespace {

using KELib::Http::ConnectionInfo;
using KELib::Http::HttpException;
using KELib::Http::SSLInfo;

struct Refusal {
  CURLoption option;
  const char* text;
};

class SetupErrorsTest : public HttpFixture {
 protected:
  SetupErrorsTest() { refusedOption = -1; }
  ~SetupErrorsTest() override { refusedOption = -1; }

  // The text of what is thrown from making a client of `settings` to a post.
  static std::string Refused(ConnectionInfo* settings, CURLoption option) {
    KELib::Http::HttpService* service = KELib::Http::GetHttpService();
    KELib::Http::HttpRequest request;
    KELib::Http::HttpResponse response;
    request.SetTimeout(5);
    refusedOption = option;
    std::string text;
    std::unique_ptr<KELib::Http::HttpClient> client;
    try {
      client.reset(service->CreateHttpClient(settings));
      client->Post(&request, &response);
    } catch (const HttpException& e) {
      text = e.What();
    }
    refusedOption = -1;
    if (client == nullptr) delete settings;
    return text;
  }
};

// A line of the file is an option and what its refusal is reported as.
TEST_F(SetupErrorsTest, ARefusedOptionIsReportedWithItsCode) {
  std::ifstream cases(KECPP_TEST_DATA "/cases/setup-refusals.txt");
  int refused = 0;
  for (std::string name, text; cases >> name && std::getline(cases >> std::ws, text); ++refused) {
    const curl_easyoption* option = curl_easy_option_by_name(name.c_str());
    ASSERT_NE(option, nullptr) << name;
    auto* settings =
        new ConnectionInfo(new SSLInfo("c", "p", "k", "a"), "https://127.0.0.1:1", true);
    settings->EnableSettingProxy();
    settings->AddHeader("A: ", "1");
    EXPECT_EQ(text + "\n", Refused(settings, option->id)) << name;
  }
  EXPECT_EQ(23, refused);
}

// Options that are set twice in a handle's life: refused the second time.
TEST_F(SetupErrorsTest, ARefusalWhileAConnectionIsPreparedLeavesTheHandleUsable) {
  info->EnableVerboseHttpLog();
  Client();
  const Refusal refusals[] = {{CURLOPT_VERBOSE, "Unable to setup HTTP. 0023\n"},
                              {CURLOPT_NOPROGRESS, "Unable to setup HTTP. 0024\n"},
                              {CURLOPT_TIMEOUT, "Unable to initialize HTTP connection. 0026\n"}};
  for (const Refusal& refusal : refusals) {
    refusedOption = refusal.option;
    EXPECT_EQ(refusal.text, Post().error);
  }
  refusedOption = -1;
  Client().GetConnectionInfo()->DisableVerboseHttpLog();
  EXPECT_EQ("", Post().error);
  EXPECT_EQ(1u, server.Requests().size());
  refusedOption = CURLOPT_TIMEOUT;
  EXPECT_EQ("Unable to set request timeout.", Post("", 5).error);
  refusedOption = CURLOPT_POST;  // its result does not count
  EXPECT_EQ("", Post().error);
}

TEST_F(SetupErrorsTest, WithoutSocketCallbacksTransfersStillWork) {
  refusedOption = CURLOPT_OPENSOCKETFUNCTION;
  server.Push(Reply::Ok("fine"));
  EXPECT_EQ("fine", Post().content);
}

}  // namespace
