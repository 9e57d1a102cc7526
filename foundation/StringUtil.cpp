// SPDX-License-Identifier: MIT
#include "foundation/StringUtil.h"

#include <strings.h>

#include <cctype>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "foundation/DateTime.h"
#include "foundation/KEConstants.h"
#include "foundation/KEException.h"
#include "foundation/KEString.h"

namespace KELib {

namespace {

const char* const kRange = "NumberRangeException";
const char* const kFormat = "NumberFormatException";

char* CopyOf(const char* text, std::size_t length) {
  char* copy = new char[length + 1];
  std::memcpy(copy, text, length);
  copy[length] = '\0';
  return copy;
}

template <std::size_t Room, typename Value>
char* Format(const char* format, Value value, const char* typeName) {
  char scratch[Room];
  const int written = std::snprintf(scratch, Room, format, value);
  if (written < 0 || static_cast<std::size_t>(written) >= Room) {
    throw FormatStringException(typeName);
  }
  return CopyOf(scratch, static_cast<std::size_t>(written));
}

// The range comes first, then what follows the number.
void CheckParsed(const char* end, bool inRange) {
  end += std::strspn(end, " \t\n\r");
  if (errno == ERANGE || !inRange) throw NumberRangeException(kRange);
  if (*end != '\0') throw NumberFormatException(kFormat);
}

int ParseSigned(const char* text) {
  char* end = nullptr;
  errno = 0;
  const long value = std::strtol(text, &end, 10);
  CheckParsed(end, value >= INT32_MIN && value <= INT32_MAX);
  return static_cast<int>(value);
}

// Where `long` has 64 bits strtoul would wrap a negative number there; a 32-bit result is -n modulo
// 2^32 for n up to 4294967295.
unsigned int ParseUnsigned(const char* text) {
  char* end = nullptr;
  errno = 0;
  const unsigned long value = std::strtoul(text, &end, 10);
  const bool negative = text[std::strspn(text, " \t\n\v\f\r")] == '-';
  const unsigned long magnitude = negative ? 0UL - value : value;
  CheckParsed(end, magnitude <= UINT32_MAX);
  return static_cast<unsigned int>(value);
}

template <typename Value>
Value Scan(const char* text, const char* format, Value value) {
  if (std::sscanf(text, format, &value) != 1) throw NumberFormatException(kFormat);
  return value;
}

}  // namespace

char* StringUtil::CopyString(const char* text, unsigned int max) {
  return text != nullptr ? CopyOf(text, strnlen(text, max)) : nullptr;
}

char* StringUtil::CopyString(const char* text) {
  return text != nullptr ? CopyOf(text, std::strlen(text)) : nullptr;
}

char StringUtil::ToLower(char c) {
  return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

char StringUtil::ToUpper(char c) {
  return static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
}

KEString StringUtil::ToLower(const KEString& text) {
  KEString lower(text);
  lower.ToLower();
  return lower;
}

bool StringUtil::IsNumber(const KEString& text) {
  return !text.Empty() && text.Cstr()[std::strspn(text.Cstr(), "0123456789")] == '\0';
}

char* StringUtil::BoolToString(bool value) {
  return CopyString(value ? STR_BOOLEAN_TRUE : STR_BOOLEAN_FALSE);
}

char* StringUtil::ByteToString(char value) {
  return Format<10>("%c", value, "Byte");
}

char* StringUtil::ShortToString(short value) {
  return Format<10>("%d", static_cast<int>(value), "Short");
}

char* StringUtil::UShortToString(unsigned short value) {
  return Format<10>("%u", static_cast<unsigned int>(value), "Short");
}

char* StringUtil::IntToString(int value) {
  return Format<40>("%d", value, "Integer");
}

char* StringUtil::UIntToString(unsigned int value) {
  return Format<40>("%u", value, "Unsigned Integer");
}

char* StringUtil::LongToString(long long value) {
  return Format<70>("%lld", value, "Long");
}

char* StringUtil::ULongToString(unsigned long long value) {
  return Format<70>("%llu", value, "Unsigned Long");
}

char* StringUtil::FloatToString(float value) {
  return Format<70>("%f", static_cast<double>(value), "Float");
}

char* StringUtil::DoubleToString(double value) {
  return Format<70>("%g", value, "Double");
}

char* StringUtil::DateTimeToString(DateTime* value) {
  return value->ToString();
}

int StringUtil::ParseInt(const char* text) {
  return ParseSigned(text);
}

unsigned int StringUtil::ParseUInt(const char* text) {
  return ParseUnsigned(text);
}

char StringUtil::ParseByte(const char* text) {
  const int value = ParseInt(text);
  if (value < SCHAR_MIN || value > SCHAR_MAX) throw NumberRangeException(kRange);
  return static_cast<char>(value);
}

short StringUtil::ParseShort(const char* text) {
  const int value = ParseInt(text);
  if (value < SHRT_MIN || value > SHRT_MAX) throw NumberRangeException(kRange);
  return static_cast<short>(value);
}

unsigned short StringUtil::ParseUShort(const char* text) {
  ParseUInt(text);
  throw NumberRangeException(kRange);
}

long long StringUtil::ParseLong(const char* text) {
  return ParseSigned(text);
}

unsigned long long StringUtil::ParseULong(const char* text) {
  return ParseUnsigned(text);
}

float StringUtil::ParseFloat(const char* text) {
  return Scan(text, "%f", DEFAULT_FLOAT);
}

double StringUtil::ParseDouble(const char* text) {
  return Scan(text, "%lf", DEFAULT_DOUBLE);
}

bool StringUtil::ParseBool(const char* text) {
  return text != nullptr && strcasecmp(text, STR_BOOLEAN_TRUE) == 0;
}

DateTime* StringUtil::ParseDateTime(const char* text) {
  return new DateTime(text, static_cast<unsigned int>(std::strlen(text)));
}

}  // namespace KELib
