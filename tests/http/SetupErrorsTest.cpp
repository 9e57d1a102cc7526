// SPDX-License-Identifier: MIT
//
// Every option that libcurl may refuse, and how that is reported.
#include <curl/curl.h>
#include <dlfcn.h>

#include <cstdarg>
#include <memory>
#include <string>

#include "http/ConnectionInfo.h"
#include "http/HttpService.h"
#include "support/Answers.h"
#include "support/ReplacedSymbol.h"

namespace {

int refusedOption = -1;
int timesUntilRefused = 0;

}  // namespace

REPLACED_SYMBOL(CURLcode, SetOptionUnlessRefused, "curl_easy_setopt",
                (CURL * easy, int option, ...)) {
  using SetOption = CURLcode (*)(CURL*, CURLoption, ...);
  static const auto original = reinterpret_cast<SetOption>(dlsym(RTLD_NEXT, "curl_easy_setopt"));
  if (option == refusedOption && --timesUntilRefused == 0) return CURLE_OUT_OF_MEMORY;
  va_list arguments;
  va_start(arguments, option);
  void* value = va_arg(arguments, void*);  // as wide as a long
  va_end(arguments);
  return original(easy, static_cast<CURLoption>(option), value);
}

namespace KELib::Http {
namespace {

// What comes of making a client and posting to nobody.
std::string PostWithRefusal(const Row& row) {
  HttpService* const service = GetHttpService();
  auto settings = std::make_unique<ConnectionInfo>(new SSLInfo("c", "p", "k", "a"),
                                                   "https://127.0.0.1:1", true);
  settings->EnableSettingProxy();
  settings->EnableVerboseHttpLog();
  settings->AddHeader("A: ", "1");
  HttpRequest request;
  HttpResponse response;
  request.SetTimeout(5);
  const curl_easyoption* const option = curl_easy_option_by_name(row[1].c_str());
  EXPECT_NE(nullptr, option) << row[1];
  refusedOption = option->id;
  timesUntilRefused = std::stoi(row[2]);
  const std::string thrown = Thrown([&] {
    const std::unique_ptr<HttpClient> client(service->CreateHttpClient(settings.get()));
    settings.release();  // a client owns its settings
    client->Post(&request, &response);
  });
  EXPECT_EQ(thrown == "nothing", response.GetErrorCode() != 0) << "the transfer's own failure";
  EXPECT_LE(timesUntilRefused, 0) << row[1] << " was not set that often";
  refusedOption = -1;
  return thrown;
}

TEST(SetupErrorsTest, AnswersTheCases) {
  ExpectAnswers(KECPP_TEST_DATA "/cases/setup-refusals.txt", {{"refused", PostWithRefusal}});
}

}  // namespace
}  // namespace KELib::Http
