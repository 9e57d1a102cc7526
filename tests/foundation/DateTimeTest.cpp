// SPDX-License-Identifier: MIT
#include "foundation/DateTime.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <string>

#include "foundation/KEException.h"

namespace KELib {
namespace {

DateTime Parse(const char* text) {
  return DateTime(text, static_cast<unsigned int>(std::strlen(text)));
}

std::string Print(const DateTime& time) {
  return std::unique_ptr<char[]>(time.ToString()).get();
}

TEST(DateTimeTest, PrintsBackWhatItParsed) {
  for (const char* text : {"2006-01-02T03:04:05Z", "2006-01-02T03:04:05.1+02:00",
                           "1969-12-31T23:59:59.000001-05:30", "2038-02-01T00:00:00.123456Z"}) {
    EXPECT_EQ(Print(Parse(text)), text);
  }
  const DateTime time = Parse("2006-01-02T03:04:05.1234567+02:00");
  EXPECT_EQ(time.GetBias(), -120);
  EXPECT_EQ(time.GetMillisecond(), 123);
  EXPECT_EQ(time.GetMicrosecond(), 456);
  EXPECT_EQ(time.GetDayOfWeek(), 1);
  EXPECT_EQ(DateTime::DayOfWeek(2006, 1, 1), 0);
}

TEST(DateTimeTest, RejectsEveryDeviation) {
  for (const char* text : {"2006-01-02 03:04:05Z", "2006-01-02T03:04:0", "2006-01-02T03:04:05X",
                           "2006-01-02T03:04:05Z ", "2006-01-02T03:04:05+0200",
                           "2006-01-02T03:04:05+02:00:00", "200a-01-02T03:04:05Z"}) {
    EXPECT_THROW(Parse(text), DateTimeFormatException) << text;
  }
}

TEST(DateTimeTest, ConvertsMicrosecondsBothWays) {
  for (long long micros : {0LL, -1LL, 1700000000123456LL, 4102444800000000LL, -86400000001LL}) {
    EXPECT_EQ(DateTime(micros, false).GetUtcTime(), micros);
    EXPECT_EQ(DateTime(micros, true).GetUtcTime(), micros);
  }
  EXPECT_EQ(Print(DateTime(-1, false)), "1969-12-31T23:59:59.999999Z");
}

TEST(DateTimeTest, LocalTimeCarriesItsOffset) {
  const char* before = std::getenv("TZ");
  const std::string saved = before != nullptr ? before : "";
  setenv("TZ", "EST5EDT,M3.2.0,M11.1.0", 1);
  tzset();
  const DateTime summer(1688169600000000LL, true), winter(1672531200000000LL, true);
  EXPECT_EQ(summer.GetBias(), 240);
  EXPECT_TRUE(summer.IsDST());
  EXPECT_EQ(winter.GetBias(), 300);
  EXPECT_FALSE(winter.IsDST());
  if (before != nullptr) {
    setenv("TZ", saved.c_str(), 1);
  } else {
    unsetenv("TZ");
  }
  tzset();
}

TEST(DateTimeTest, PrintingStaysWithinItsArrays) {
  const DateTime wild(INT_MIN, INT_MIN, INT_MAX, -1, 99, 61.0);
  EXPECT_EQ(Print(wild).size(), 20U);
  const DateTime wilder(99999, 13, 32, 24, 60, 59.9999);
  EXPECT_EQ(std::strlen(std::unique_ptr<char[]>(wilder.ToShortString()).get()), 23U);
  EXPECT_STREQ(std::unique_ptr<char[]>(Parse("2006-01-02T03:04:05Z").ToShortString()).get(),
               "2006-01-02 03:04:05.");
}

}  // namespace
}  // namespace KELib
