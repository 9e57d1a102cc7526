// SPDX-License-Identifier: MIT
#include "foundation/Logger.h"

#include <gtest/gtest.h>
#include <syslog.h>

#include <cerrno>
#include <string>
#include <thread>

#include "support/CapturedLog.h"

namespace {

namespace Logging = KELib::Logging;
using Logging::Logger;

class LoggerTest : public testing::Test {
 protected:
  void SetUp() override { CapturedLog::Clear(); }
  void TearDown() override { Logging::FreeDefaultLogger(); }

  static std::string OnlyLine() {
    const auto lines = CapturedLog::Lines();
    CapturedLog::Clear();
    return lines.size() == 1 ? lines[0].text : std::to_string(lines.size()) + " lines";
  }
};

TEST_F(LoggerTest, MapsLevelsToPriorities) {
  Logger logger(Logging::LOG_LEVEL_TRIVIA);
  for (int level = -1; level <= 7; ++level) logger.Write(level, "text");
  std::string priorities;
  for (const auto& line : CapturedLog::Lines()) priorities += std::to_string(line.priority) + " ";
  EXPECT_EQ("7 0 3 4 6 7 7 ", priorities) << "debug, emergency, error, warning, information, debug";
}

TEST_F(LoggerTest, DropsWhatIsAboveItsLevelAndWhatIsEmpty) {
  Logging::GetDefaultLogger()->SetLevelByName("warning");
  Logging::Log(nullptr, Logging::LOG_LEVEL_INFO, "info");
  Logging::Log(nullptr, Logging::LOG_LEVEL_WARNING, "");
  Logging::Log(nullptr, Logging::LOG_LEVEL_WARNING, nullptr);
  EXPECT_TRUE(CapturedLog::Lines().empty());
  Logging::Log(nullptr, 1, "panic");
  EXPECT_EQ(LOG_EMERG, CapturedLog::Lines().at(0).priority);
  EXPECT_EQ("panic", OnlyLine());

  Logging::FreeDefaultLogger();
  Logging::Log(nullptr, Logging::LOG_LEVEL_INFO, "a fresh %s", "logger");
  EXPECT_EQ("a fresh logger", OnlyLine());
}

TEST_F(LoggerTest, LevelNamesAreExact) {
  Logger logger;
  EXPECT_TRUE(logger.IsLevel(Logging::LOG_LEVEL_VERBOSE));
  for (const char* name : {"none", "panic", "error", "warning", "info", "verbose", "trivia"}) {
    logger.SetLevelByName(name);
    EXPECT_STREQ(name, logger.GetLevelByName());
  }
  for (const char* name : {"VERBOSE", static_cast<const char*>(nullptr)}) {
    logger.SetLevelByName(name);
    EXPECT_TRUE(logger.IsLevel(Logging::LOG_LEVEL_TRIVIA));
  }
  for (int unknown : {-1, 7}) {
    logger.SetLevel(unknown);
    EXPECT_STREQ("", logger.GetLevelByName());
  }
}

TEST_F(LoggerTest, WritesConversionsWithoutArgumentLiterally) {
  Logger logger;
  const auto written = [&logger](const char* format, const char* argument) {
    logger.Write(Logging::LOG_LEVEL_ERROR, format, argument);
    return OnlyLine();
  };
  EXPECT_EQ("100%, 100%", written("100%%, 100%", nullptr));
  EXPECT_EQ("%s%n%5d", written("%s%n%5d", nullptr));
  EXPECT_EQ("% %s", written("% %s", nullptr));
  EXPECT_EQ("%s%n: %s", written("%s: %s", "%s%n"));
  EXPECT_EQ("%d %-3s text %n%", written("%d %-3s %s %n%", "text"));
  errno = ENOENT;
  EXPECT_EQ("No such file or directory: %d", written("%m: %d", nullptr));
}

TEST_F(LoggerTest, ThreadsLogWhileTheDefaultLoggerIsFreed) {
  const auto log = [] {
    for (int line = 0; line < 500; ++line) {
      Logging::GetDefaultLogger()->Write(Logging::LOG_LEVEL_ERROR, "one %s", "line");
    }
  };
  std::thread first(log), second(log);
  for (int i = 0; i < 500; ++i) Logging::FreeDefaultLogger();
  log();
  first.join();
  second.join();
  EXPECT_EQ(1500u, CapturedLog::Count("one line"));
}

}  // namespace
