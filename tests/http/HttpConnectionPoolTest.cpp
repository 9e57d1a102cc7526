// SPDX-License-Identifier: MIT
#include "http/HttpConnectionPool.h"

#include <functional>
#include <map>
#include <string>

#include "http/ConnectionInfo.h"
#include "http/HttpException.h"
#include "http/HttpService.h"
#include "support/Answers.h"

namespace KELib::Http {
namespace {

class Pools {
 public:
  Pools() {
    GetHttpService();
    pool.Init();
    other.Init();
  }

  // What a step comes to; the case file tells the steps.
  std::string Do(const std::string& step) {
    std::string result;
    const std::string thrown = Thrown([&] { result = Do(Split(step, " ")); });
    return thrown == "nothing" ? result : thrown;
  }

 private:
  std::string Do(const Row& words) {
    const std::string argument = words.size() > 1 ? words[1] : "";
    const auto ref = [&](unsigned int word) -> HttpHandleRef& { return refs[words.at(word)]; };
    HttpHandleRef passing;
    const std::map<std::string, std::function<std::string()>> steps = {
        {"take", [&] { return NumberOf(pool, ref(1)); }},
        {"take-other", [&] { return NumberOf(other, ref(1)); }},
        {"lowest", [&] { return NumberOf(pool, passing); }},
        {"copy", [&] { return refs.emplace(words.at(2), ref(1)), "ok"; }},
        {"assign", [&] { return ref(2) = ref(1), "ok"; }},
        {"set", [&] { return ref(2).Set(&pool, ref(1).handle), "ok"; }},
        {"clear", [&] { return ref(1).Set(nullptr, nullptr), "ok"; }},
        {"free", [&] { return pool.FreeHandle(ref(1).handle), "ok"; }},
        {"end", [&] { return refs.erase(argument), "ok"; }},
        {"wait", [&] { return pool.WaitForFreeHandle(std::stoi(argument)) ? "yes" : "no"; }},
        {"size", [&] { return std::to_string(pool.GetSize()); }},
        {"resize",
         [&] { return pool.SetSize(static_cast<unsigned int>(std::stoi(argument))), "ok"; }},
        {"release", [&] { return pool.Release(), "ok"; }},
        {"init", [&] { return pool.Init(), "ok"; }}};
    return steps.at(words[0])();
  }

  std::string NumberOf(HttpConnectionPool& from, HttpHandleRef& ref) {
    from.GetHandle(&info, ref);
    if (ref.handle == nullptr) return "none";
    return std::to_string(numbers.emplace(ref.handle, numbers.size() + 1).first->second);
  }

  ConnectionInfo info{nullptr, "http://127.0.0.1:1/", true};
  HttpConnectionPool pool, other;
  std::map<HttpHandle*, std::size_t> numbers;
  std::map<std::string, HttpHandleRef> refs;
};

TEST(HttpConnectionPoolTest, AnswersTheCases) {
  ExpectAnswers(
      KECPP_TEST_DATA "/cases/pool.txt",
      {{"clamp", [](const Row& row) { return std::to_string(ClampTimeout(std::stoll(row[1]))); }},
       {"steps", [](const Row& row) {
          Pools pools;
          return Stepwise(row[1], [&](const auto& step) { return pools.Do(step); });
        }}});
}

TEST(HttpConnectionPoolTest, AHandleThatCouldNotBePreparedStaysFreeAndIsPreparedLater) {
  GetHttpService();
  HttpConnectionPool pool;
  EXPECT_THROW(pool.SetSize(1), HttpException) << "without a share";
  pool.Init();
  pool.SetSize(1);
  ConnectionInfo plain(nullptr, "http://127.0.0.1:1/", true);
  ConnectionInfo secure(new SSLInfo("c", "", "k", "a", "DER"), "https://h", true);
  HttpHandleRef ref;
  for (int attempt = 0; attempt < 2; ++attempt) {
    EXPECT_EQ("InvalidArgumentException: Invalid Certificate type. Expected PEM. Got : DER",
              Thrown([&] { pool.GetHandle(&secure, ref); }));
    EXPECT_EQ(nullptr, ref.handle);
  }
  pool.GetHandle(&plain, ref);
  ASSERT_NE(nullptr, ref.handle);
  EXPECT_TRUE(ref.handle->prepared);
}

}  // namespace
}  // namespace KELib::Http
