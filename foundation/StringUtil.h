// SPDX-License-Identifier: MIT
//
// Conversions between numbers, booleans, dates and text.
//
// Ownership: every returned `char*` is a new array that the caller frees with array delete.
// Thread safety: all functions may be called from any thread.
// Parsed integers have 32 bits also where the result type is wider, on every build.
#ifndef KECPP_FOUNDATION_STRINGUTIL_H
#define KECPP_FOUNDATION_STRINGUTIL_H

#include "foundation/KEExport.h"

namespace KELib {

class DateTime;
class KEString;

class KECPP_API StringUtil {
 public:
  // Null for null, otherwise a copy of at most `max` characters, or of all.
  static char* CopyString(const char* text, unsigned int max);
  static char* CopyString(const char* text);

  // ASCII letters only.
  static char ToLower(char c);
  static char ToUpper(char c);
  static KEString ToLower(const KEString& text);

  // True for a non-empty text of decimal digits only.
  static bool IsNumber(const KEString& text);

  // Throw FormatStringException with the type's name when the number cannot be formatted.
  static char* BoolToString(bool value);
  static char* ByteToString(char value);  // the character itself
  static char* ShortToString(short value);
  static char* UShortToString(unsigned short value);
  static char* IntToString(int value);
  static char* UIntToString(unsigned int value);
  static char* LongToString(long long value);
  static char* ULongToString(unsigned long long value);
  static char* FloatToString(float value);    // "%f"
  static char* DoubleToString(double value);  // "%g"
  static char* DateTimeToString(DateTime* value);

  // Accept leading and trailing white space; an empty or blank text is 0. Throw
  // NumberRangeException outside the range and NumberFormatException for other text. `text` must
  // not be null.
  static int ParseInt(const char* text);
  static unsigned int ParseUInt(const char* text);  // "-1" is 4294967295, as strtoul has it
  static char ParseByte(const char* text);          // -128 to 127
  static short ParseShort(const char* text);
  static unsigned short ParseUShort(const char* text);     // always throws NumberRangeException
  static long long ParseLong(const char* text);            // signed 32-bit range
  static unsigned long long ParseULong(const char* text);  // unsigned 32-bit range

  // Take the longest number at the start of the text. Throw NumberFormatException without one.
  static float ParseFloat(const char* text);
  static double ParseDouble(const char* text);

  // True exactly for "true" in any letter case; null gives false. Never throws.
  static bool ParseBool(const char* text);

  // A new date that the caller deletes. Throws DateTimeFormatException.
  static DateTime* ParseDateTime(const char* text);
};

}  // namespace KELib

#endif
