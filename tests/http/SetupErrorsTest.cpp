// SPDX-License-Identifier: MIT
//
// Every option that the transfer library may refuse, and how that is reported.
#include <curl/curl.h>
#include <dlfcn.h>

#include <atomic>
#include <cstdarg>
#include <ostream>
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

void PrintTo(const Refusal& refusal, std::ostream* out) {
  *out << refusal.text;
}

class SetupErrorsTest : public HttpFixture, public testing::WithParamInterface<Refusal> {
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

TEST_P(SetupErrorsTest, IsReportedWithItsCode) {
  auto* settings = new ConnectionInfo(new SSLInfo("c", "p", "k", "a"), "https://127.0.0.1:1", true);
  settings->EnableSettingProxy();
  settings->AddHeader("A: ", "1");
  EXPECT_EQ(GetParam().text, Refused(settings, GetParam().option));
}

INSTANTIATE_TEST_SUITE_P(
    All, SetupErrorsTest,
    testing::Values(Refusal{CURLOPT_SHARE, "Unable to setup HTTP. 0012\n"},
                    Refusal{CURLOPT_VERBOSE, "Unable to setup HTTP. 0013\n"},
                    Refusal{CURLOPT_NOPROGRESS, "Unable to setup HTTP. 0014\n"},
                    Refusal{CURLOPT_NOSIGNAL, "Unable to setup HTTP. 0015\n"},
                    Refusal{CURLOPT_TIMEOUT, "Unable to setup HTTP. 0016\n"},
                    Refusal{CURLOPT_HTTPHEADER, "Unable to initialize HTTP connection. 0020\n"},
                    Refusal{CURLOPT_PROXY, "Unable to initialize HTTP connection. 0021\n"},
                    Refusal{CURLOPT_PROXYPORT, "Unable to initialize HTTP connection. 0022\n"},
                    Refusal{CURLOPT_COOKIEFILE, "Unable to initialize HTTP connection. 0025\n"},
                    Refusal{CURLOPT_WRITEFUNCTION, "Unable to initialize HTTP connection. 0028\n"},
                    Refusal{CURLOPT_SSLCERTTYPE, "Unable to initialize SSL. 0030\n"},
                    Refusal{CURLOPT_SSLCERT, "Unable to initialize SSL. 0031\n"},
                    Refusal{CURLOPT_KEYPASSWD, "Unable to initialize SSL. 0032\n"},
                    Refusal{CURLOPT_SSLKEYTYPE, "Unable to initialize SSL. 0033\n"},
                    Refusal{CURLOPT_SSLKEY, "Unable to initialize SSL. 0034\n"},
                    Refusal{CURLOPT_CAINFO, "Unable to initialize SSL. 0035\n"},
                    Refusal{CURLOPT_SSL_VERIFYPEER, "Unable to initialize SSL. 0036\n"},
                    Refusal{CURLOPT_SSL_VERIFYHOST, "Unable to initialize SSL. 0037\n"},
                    Refusal{CURLOPT_POSTFIELDS, "Error sending HTTP request.0040\n"},
                    Refusal{CURLOPT_POSTFIELDSIZE, "Error sending HTTP request.0041\n"},
                    Refusal{CURLOPT_WRITEDATA, "Error sending HTTP request.0042\n"},
                    Refusal{CURLOPT_ERRORBUFFER, "Error sending HTTP request.0043\n"},
                    Refusal{CURLOPT_URL, "Error sending HTTP request.0044\n"}));

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
