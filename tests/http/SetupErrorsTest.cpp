// SPDX-License-Identifier: MIT
//
// Every option that the transfer library may refuse, and how that is reported.
#include <curl/curl.h>
#include <dlfcn.h>

#include <atomic>
#include <cstdarg>
#include <memory>
#include <string>
#include <utility>

#include "http/HttpFixture.h"
#include "support/Answers.h"

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

namespace KELib::Http {
namespace {

class SetupErrorsTest : public HttpFixture {
 protected:
  ~SetupErrorsTest() override { refusedOption = -1; }
};

// What comes of making a client and posting when an option is refused.
std::string Refused(const Row& row) {
  const curl_easyoption* option = curl_easy_option_by_name(row[1].c_str());
  HttpService* const service = GetHttpService();
  auto settings = std::make_unique<ConnectionInfo>(new SSLInfo("c", "p", "k", "a"),
                                                   "https://127.0.0.1:1", true);
  settings->EnableSettingProxy();
  settings->AddHeader("A: ", "1");
  HttpRequest request;
  HttpResponse response;
  request.SetTimeout(5);
  refusedOption = option != nullptr ? option->id : -1;
  const std::string thrown = Thrown([&] {
    const std::unique_ptr<HttpClient> client(service->CreateHttpClient(settings.get()));
    settings.release();
    client->Post(&request, &response);
  });
  refusedOption = -1;
  return thrown;
}

TEST(SetupErrors, AnswerTheCases) {
  ExpectAnswers(KECPP_TEST_DATA "/cases/setup-refusals.txt", {{"refused", Refused}});
}

// Options that are set twice in a handle's life: refused the second time.
TEST_F(SetupErrorsTest, ARefusalWhileAConnectionIsPreparedLeavesTheHandleUsable) {
  info->EnableVerboseHttpLog();
  Client();
  const std::pair<CURLoption, const char*> refusals[] = {
      {CURLOPT_VERBOSE, "HttpException: Unable to setup HTTP. 0023\n"},
      {CURLOPT_NOPROGRESS, "HttpException: Unable to setup HTTP. 0024\n"},
      {CURLOPT_TIMEOUT, "HttpException: Unable to initialize HTTP connection. 0026\n"}};
  for (const auto& [option, text] : refusals) {
    refusedOption = option;
    EXPECT_EQ(text, Post().thrown);
  }
  refusedOption = -1;
  Client().GetConnectionInfo()->DisableVerboseHttpLog();
  EXPECT_EQ("nothing", Post().thrown);
  EXPECT_EQ(1u, server.Requests().size());
  refusedOption = CURLOPT_TIMEOUT;
  EXPECT_EQ("HttpException: Unable to set request timeout.", Post("", 5).thrown);
  refusedOption = CURLOPT_POST;  // its result does not count
  EXPECT_EQ("nothing", Post().thrown);
}

TEST_F(SetupErrorsTest, WithoutSocketCallbacksTransfersStillWork) {
  refusedOption = CURLOPT_OPENSOCKETFUNCTION;
  server.Push(Reply::Ok("fine"));
  EXPECT_EQ("fine", Post().content);
}

}  // namespace
}  // namespace KELib::Http
