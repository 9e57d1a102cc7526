// SPDX-License-Identifier: MIT
//
// A calendar time in fields: parses and prints "CCYY-MM-DDTHH:MM:SS.mmmuuu+HH:MM" (XML Schema
// dateTime) and prints the short form "CCYY-MM-DD HH:MM:SS.mmm".
//
// Thread safety: none; distinct objects may be used at the same time.
#ifndef KECPP_FOUNDATION_DATETIME_H
#define KECPP_FOUNDATION_DATETIME_H

#include "foundation/KEExport.h"

namespace KELib {

class KECPP_API DateTime {
 public:
  // Parses the first `length` characters. Throws DateTimeFormatException on any deviation.
  DateTime(const char* text, unsigned int length);

  // From parts, as UTC; the fraction of the seconds is kept to the microsecond.
  DateTime(int year, int month, int day, int hour, int minute, double seconds);

  // From microseconds since the epoch, as UTC or in the process's time zone.
  DateTime(long long microseconds, bool local);

  // The time now. Throws SystemException when the clock fails.
  static DateTime Now(bool local);

  // Microseconds since the epoch, UTC. Defined within 290,000 years of it.
  long long GetUtcTime() const;

  // The full form; a new array of 33 characters that the caller frees with array delete.
  char* ToString() const;

  // The short form; a new array of 24 characters, likewise. Ends in "." without milliseconds.
  char* ToShortString() const;

  // Writes "CCYY-MM-DD", `separator` and "HH:MM:SS": 19 characters and a NUL. Fields out of range
  // are printed as the nearest value in it.
  void PutShortDateTime(char* out, char separator) const;

  // 0 (Sunday) to 6.
  static int DayOfWeek(int year, int month, int day);

  int GetYear() const { return century * 100 + yearInCentury; }
  int GetCentury() const { return century; }
  int GetYearInCentury() const { return yearInCentury; }
  int GetMonth() const { return month; }
  int GetDay() const { return day; }
  int GetDayOfWeek() const { return dayOfWeek; }
  int GetHour() const { return hour; }
  int GetMinute() const { return minute; }
  int GetSecond() const { return second; }
  int GetMillisecond() const { return millisecond; }
  int GetMicrosecond() const { return microsecond; }
  int GetBias() const { return bias; }
  bool IsDST() const { return dst; }

  bool operator==(const DateTime& other) const;
  bool operator!=(const DateTime& other) const { return !(*this == other); }

 private:
  void SetDate(int year);

  int century = 0;        // year / 100
  int yearInCentury = 0;  // year % 100
  int month = 1;          // 1 to 12
  int day = 1;            // 1 to 31
  int dayOfWeek = 0;      // 0 = Sunday; computed
  int hour = 0;
  int minute = 0;
  int second = 0;
  int millisecond = 0;  // 0 to 999
  int microsecond = 0;  // 0 to 999, beyond the milliseconds
  int bias = 0;         // minutes to add to the represented time to obtain UTC
  bool dst = false;     // daylight-saving time in effect
};

}  // namespace KELib

#endif
