// SPDX-License-Identifier: MIT
#include "foundation/DateTime.h"

#include <climits>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <string>

#include "support/Answers.h"

namespace KELib {
namespace {

DateTime Parse(const std::string& text) {
  return DateTime(text.c_str(), static_cast<unsigned int>(text.size()));
}

std::string Owned(char* array) {
  return std::unique_ptr<char[]>(array).get();
}

std::string Printed(const Row& row) {
  try {
    return Owned(Parse(row[1]).ToString());
  } catch (const DateTimeFormatException&) {
    return "refused";
  }
}

std::string OfMicroseconds(const Row& row) {
  const long long micros = std::stoll(row[1]);
  EXPECT_EQ(micros, DateTime(micros, false).GetUtcTime());
  EXPECT_EQ(micros, DateTime(micros, true).GetUtcTime());
  return Owned(DateTime(micros, false).ToString());
}

TEST(DateTimeTest, PrintsBackWhatItParsed) {
  ExpectAnswers(KECPP_TEST_DATA "/cases/times.txt",
                {{"time", Printed}, {"microseconds", OfMicroseconds}});
  const DateTime time = Parse("2006-01-02T03:04:05.1234567+02:00");
  EXPECT_TRUE(time == Parse("2006-01-02T03:04:05.1234567+02:00"));
  for (const char* other :
       {"2406-01-02T03:04:05.1234567+02:00", "2006-01-02T03:04:05.1234567+01:00",
        "2006-01-02T03:04:05.1235567+02:00"}) {
    EXPECT_FALSE(time == Parse(other)) << other;
  }
  EXPECT_EQ(time.GetBias(), -120);
  EXPECT_EQ(time.GetMillisecond(), 123);
  EXPECT_EQ(time.GetMicrosecond(), 456);
  EXPECT_EQ(time.GetDayOfWeek(), 1);
  // 400 years are 20,871 weeks.
  const int sundays[] = {2006, 6, -394, -794};
  for (const int year : sundays) EXPECT_EQ(DateTime::DayOfWeek(year, 1, 1), 0) << year;
  EXPECT_EQ(DateTime::DayOfWeek(2023, 11, 14), 2);
  const int leapDay[] = {2000, 0, -400, -2000000000};
  for (const int year : leapDay) EXPECT_EQ(DateTime::DayOfWeek(year, 2, 29), 2) << year;
  EXPECT_EQ(DateTime::DayOfWeek(-100, 1, 31), DateTime::DayOfWeek(1900, 1, 31));
}

TEST(DateTimeTest, LocalTimeCarriesItsOffset) {
  const char* const before = std::getenv("TZ");
  const std::string saved = before != nullptr ? before : "";
  setenv("TZ", "EST5EDT,M3.2.0,M11.1.0", 1);
  tzset();
  const DateTime summer(1688169600000000LL, true), winter(1672531200000000LL, true);
  EXPECT_TRUE(summer.GetBias() == 240 && summer.IsDST());
  EXPECT_TRUE(winter.GetBias() == 300 && !winter.IsDST());
  before != nullptr ? setenv("TZ", saved.c_str(), 1) : unsetenv("TZ");
  tzset();
}

TEST(DateTimeTest, PrintingStaysWithinItsArrays) {
  EXPECT_EQ(20u, Owned(DateTime(INT_MIN, INT_MIN, INT_MAX, -1, 99, 61.0).ToString()).size());
  EXPECT_EQ(23u, Owned(DateTime(99999, 13, 32, 24, 60, 59.9999).ToShortString()).size());
  EXPECT_EQ("2006-01-02 03:04:05.", Owned(Parse("2006-01-02T03:04:05Z").ToShortString()));
}

}  // namespace
}  // namespace KELib
