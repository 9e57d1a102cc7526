// SPDX-License-Identifier: MIT
#include "http/HttpConnectionPool.h"

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
    std::string result = "ok";
    const std::string thrown = Thrown([&] { Do(Split(step, " "), result); });
    return thrown == "nothing" ? result : thrown;
  }

 private:
  void Do(const Row& words, std::string& result) {
    const std::string &what = words[0], argument = words.size() > 1 ? words[1] : "";
    HttpHandleRef passing;
    if (what == "take") {
      result = NumberOf(pool, refs[argument]);
    } else if (what == "take-other") {
      result = NumberOf(other, refs[argument]);
    } else if (what == "lowest") {
      result = NumberOf(pool, passing);
    } else if (what == "copy") {
      refs.emplace(words[2], refs[argument]);
    } else if (what == "clear") {
      refs[argument].Set(nullptr, nullptr);
    } else if (what == "free") {
      pool.FreeHandle(refs[argument].handle);
    } else if (what == "end") {
      refs.erase(argument);
    } else if (what == "wait") {
      result = pool.WaitForFreeHandle(std::stoi(argument)) ? "yes" : "no";
    } else if (what == "size") {
      result = std::to_string(pool.GetSize());
    } else if (what == "resize") {
      pool.SetSize(static_cast<unsigned int>(std::stoi(argument)));
    } else if (what == "release") {
      pool.Release();
    } else if (what == "init") {
      pool.Init();
    } else {
      result = "no such step";
    }
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
  ExpectAnswers(KECPP_TEST_DATA "/cases/pool.txt",
                {{"steps", [](const Row& row) {
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

TEST(HttpHandleTest, ClampsTheTimeoutToWhatFitsInMilliseconds) {
  EXPECT_EQ(0, ClampTimeout(-1));
  EXPECT_EQ(2147483, ClampTimeout(2147483));
  EXPECT_EQ(2147483, ClampTimeout(0x7fffffffffffffffLL));
}

}  // namespace
}  // namespace KELib::Http
