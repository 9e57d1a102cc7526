// SPDX-License-Identifier: MIT
#include "foundation/DateTime.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <ctime>

#include "foundation/KEException.h"
#include "foundation/KETime.h"

namespace KELib {

namespace {

constexpr long long kMicrosPerSecond = 1000000;
constexpr unsigned int kFractionDigits = 6;

[[noreturn]] void ThrowFormat() {
  throw DateTimeFormatException("DateTimeFormatException");
}

// Takes a date's text piece by piece.
class Scanner {
 public:
  Scanner(const char* start, unsigned int length) : at(start), end(start + length) {}

  bool AtEnd() const { return at >= end; }
  unsigned int Left() const { return static_cast<unsigned int>(end - at); }

  bool TakeIf(char c) {
    if (AtEnd() || *at != c) return false;
    ++at;
    return true;
  }
  void Expect(char c) {
    if (!TakeIf(c)) ThrowFormat();
  }
  bool TakeDigit(int& digit) {
    if (AtEnd() || *at < '0' || *at > '9') return false;
    digit = *at++ - '0';
    return true;
  }
  int TwoDigits() {
    int tens = 0, units = 0;
    if (!TakeDigit(tens) || !TakeDigit(units)) ThrowFormat();
    return tens * 10 + units;
  }

 private:
  const char* at;
  const char* end;
};

// The microseconds of a fraction; digits beyond the sixth are consumed and ignored.
int TakeFraction(Scanner& scanner) {
  int micros = 0, digit = 0;
  unsigned int digits = 0;
  for (; scanner.TakeDigit(digit); ++digits) {
    if (digits < kFractionDigits) micros = micros * 10 + digit;
  }
  for (; digits < kFractionDigits; ++digits) micros *= 10;
  return micros;
}

int TakeZone(Scanner& scanner) {
  if (scanner.AtEnd()) return 0;
  int sign = 0;
  if (scanner.TakeIf('+')) {
    sign = -1;
  } else if (scanner.TakeIf('-')) {
    sign = 1;
  } else {
    scanner.Expect('Z');
  }
  if (sign == 0) {
    if (!scanner.AtEnd()) ThrowFormat();
    return 0;
  }
  if (scanner.Left() != 5) ThrowFormat();
  const int hours = scanner.TwoDigits();
  scanner.Expect(':');
  return sign * (hours * 60 + scanner.TwoDigits());
}

char* PutTwoDigits(char* out, int value, int max) {
  const int shown = std::clamp(value, 0, max);
  *out++ = static_cast<char>('0' + shown / 10);
  *out++ = static_cast<char>('0' + shown % 10);
  return out;
}

// Three digits without the zeros at their end; nothing for 0.
char* PutThousandths(char* out, int value) {
  int shown = std::clamp(value, 0, 999);
  for (int unit = 100; shown > 0; unit /= 10) {
    *out++ = static_cast<char>('0' + shown / unit);
    shown %= unit;
  }
  return out;
}

char* PutThreeDigits(char* out, int value) {
  const int shown = std::clamp(value, 0, 999);
  *out++ = static_cast<char>('0' + shown / 100);
  return PutTwoDigits(out, shown % 100, 99);
}

}  // namespace

DateTime::DateTime(const char* text, unsigned int length) {
  if (text == nullptr) ThrowFormat();
  Scanner scanner(text, length);
  century = scanner.TwoDigits();
  yearInCentury = scanner.TwoDigits();
  scanner.Expect('-');
  month = scanner.TwoDigits();
  scanner.Expect('-');
  day = scanner.TwoDigits();
  scanner.Expect('T');
  hour = scanner.TwoDigits();
  scanner.Expect(':');
  minute = scanner.TwoDigits();
  scanner.Expect(':');
  second = scanner.TwoDigits();
  if (scanner.TakeIf('.')) {
    const int micros = TakeFraction(scanner);
    millisecond = micros / 1000;
    microsecond = micros % 1000;
  }
  bias = TakeZone(scanner);
  dayOfWeek = DayOfWeek(GetYear(), month, day);
}

DateTime::DateTime(int year, int monthOfYear, int dayOfMonth, int hourOfDay, int minuteOfHour,
                   double seconds)
    : month(monthOfYear), day(dayOfMonth), hour(hourOfDay), minute(minuteOfHour) {
  SetDate(year);
  const long long micros = std::llround(seconds * static_cast<double>(kMicrosPerSecond));
  second = static_cast<int>(micros / kMicrosPerSecond);
  millisecond = static_cast<int>(micros % kMicrosPerSecond / 1000);
  microsecond = static_cast<int>(micros % 1000);
}

DateTime::DateTime(long long microseconds, bool local) {
  long long seconds = microseconds / kMicrosPerSecond;
  long long fraction = microseconds % kMicrosPerSecond;
  if (fraction < 0) {  // before the epoch: the fraction counts forward all the same
    fraction += kMicrosPerSecond;
    --seconds;
  }
  const std::time_t time = static_cast<std::time_t>(seconds);
  std::tm parts{};
  if (local) {
    localtime_r(&time, &parts);
    bias = -static_cast<int>(parts.tm_gmtoff / 60);
    dst = parts.tm_isdst > 0;
  } else {
    gmtime_r(&time, &parts);
  }
  month = parts.tm_mon + 1;
  day = parts.tm_mday;
  hour = parts.tm_hour;
  minute = parts.tm_min;
  second = parts.tm_sec;
  millisecond = static_cast<int>(fraction / 1000);
  microsecond = static_cast<int>(fraction % 1000);
  SetDate(parts.tm_year + 1900);
}

void DateTime::SetDate(int year) {
  century = year / 100;
  yearInCentury = year % 100;
  dayOfWeek = DayOfWeek(year, month, day);
}

DateTime DateTime::Now(bool local) {
  return DateTime(GetTime(), local);
}

long long DateTime::GetUtcTime() const {
  std::tm parts{};
  parts.tm_year = GetYear() - 1900;
  parts.tm_mon = month - 1;
  parts.tm_mday = day;
  parts.tm_hour = hour;
  parts.tm_min = minute;
  parts.tm_sec = second;
  const long long seconds = static_cast<long long>(timegm(&parts)) + bias * 60LL;
  return seconds * kMicrosPerSecond + millisecond * 1000LL + microsecond;
}

// The quotients are floors, also in front of the year 0.
int DateTime::DayOfWeek(int year, int month, int day) {
  const auto floor = [](long long value, long long by) {
    return value / by - (value % by < 0 ? 1 : 0);
  };
  const long long m = month, y = year;
  const long long z = month < 3 ? y - 1 : y;
  const long long sum = floor(23 * m, 9) + day + 4 + y + floor(z, 4) - floor(z, 100) +
                        floor(z, 400) - (month < 3 ? 0 : 2);
  return static_cast<int>((sum % 7 + 7) % 7);
}

void DateTime::PutShortDateTime(char* out, char separator) const {
  out = PutTwoDigits(out, century, 99);
  out = PutTwoDigits(out, yearInCentury, 99);
  *out++ = '-';
  out = PutTwoDigits(out, month, 12);
  *out++ = '-';
  out = PutTwoDigits(out, day, 31);
  *out++ = separator;
  out = PutTwoDigits(out, hour, 23);
  *out++ = ':';
  out = PutTwoDigits(out, minute, 59);
  *out++ = ':';
  out = PutTwoDigits(out, second, 59);
  *out = '\0';
}

char* DateTime::ToString() const {
  char* text = new char[33];
  PutShortDateTime(text, 'T');
  char* out = text + std::strlen(text);
  if (microsecond > 0) {
    *out++ = '.';
    out = PutThousandths(PutThreeDigits(out, millisecond), microsecond);
  } else if (millisecond > 0) {
    *out++ = '.';
    out = PutThousandths(out, millisecond);
  }
  if (bias == 0) {
    *out++ = 'Z';
  } else {
    const long long minutes = bias < 0 ? -static_cast<long long>(bias) : bias;
    *out++ = bias < 0 ? '+' : '-';
    out = PutTwoDigits(out, minutes / 60 < 14 ? static_cast<int>(minutes / 60) : 14, 14);
    *out++ = ':';
    out = PutTwoDigits(out, static_cast<int>(minutes % 60), 59);
  }
  *out = '\0';
  return text;
}

char* DateTime::ToShortString() const {
  char* text = new char[24];
  PutShortDateTime(text, ' ');
  char* out = text + std::strlen(text);
  *out++ = '.';
  *PutThousandths(out, millisecond) = '\0';
  return text;
}

bool DateTime::operator==(const DateTime& other) const {
  return century == other.century && yearInCentury == other.yearInCentury && month == other.month &&
         day == other.day && dayOfWeek == other.dayOfWeek && hour == other.hour &&
         minute == other.minute && second == other.second && millisecond == other.millisecond &&
         microsecond == other.microsecond && bias == other.bias && dst == other.dst;
}

}  // namespace KELib
