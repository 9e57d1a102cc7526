// SPDX-License-Identifier: MIT
#include "http/CookieStore.h"

#include <curl/curl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace KELib::Http {
namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;

// A handle with cookies of its own, as the pool's have them.
class Handle {
 public:
  Handle() { curl_easy_setopt(easy.get(), CURLOPT_COOKIEFILE, ""); }

  // As a server would: an answer's header between Load and Save.
  void Receive(CookieStore& store, const std::string& header) {
    store.Load(easy.get(), known);
    if (!header.empty()) {
      curl_easy_setopt(easy.get(), CURLOPT_COOKIELIST, ("Set-Cookie: " + header).c_str());
    }
    store.Save(easy.get(), known);
  }

  // "path name=value" of each.
  std::vector<std::string> Cookies() {
    std::vector<std::string> cookies;
    for (const std::string& line : known.lines) {
      std::vector<std::string> fields;
      std::istringstream stream(line);
      for (std::string field; std::getline(stream, field, '\t');) fields.push_back(field);
      cookies.push_back(fields.at(2) + " " + fields.at(5) + "=" + fields.at(6));
    }
    return cookies;
  }

 private:
  std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> easy{curl_easy_init(), &curl_easy_cleanup};
  HandleCookies known;
};

TEST(CookieStoreTest, CarriesWhatServersSetAndRemoveToEveryHandle) {
  CookieStore store;
  Handle first, second;
  second.Receive(store, "");
  EXPECT_THAT(second.Cookies(), ElementsAre());
  first.Receive(store, "session=one; domain=host; path=/");
  first.Receive(store, "session=deep; domain=host; path=/sdk");
  second.Receive(store, "");
  EXPECT_THAT(second.Cookies(), UnorderedElementsAre("/ session=one", "/sdk session=deep"));
  second.Receive(store, "session=two; domain=host; path=/");
  first.Receive(store, "other=a; domain=host; path=/");
  EXPECT_THAT(first.Cookies(),
              UnorderedElementsAre("/ session=two", "/sdk session=deep", "/ other=a"));
  first.Receive(store, "session=; domain=host; path=/; expires=Thu, 01 Jan 1970 00:00:01 GMT");
  second.Receive(store, "");
  EXPECT_THAT(second.Cookies(), UnorderedElementsAre("/sdk session=deep", "/ other=a"));
}

}  // namespace
}  // namespace KELib::Http
