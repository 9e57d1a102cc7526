// SPDX-License-Identifier: MIT
//
// A date and time as text, or as a number of microseconds. What is printed reads back as the same.
#include <cstring>
#include <memory>

#include "foundation/DateTime.h"
#include "foundation/KEException.h"
#include "fuzz/Fuzz.h"

namespace {

using KELib::DateTime;

bool IsInRange(const DateTime& t) {
  return t.GetYear() >= 0 && t.GetYear() <= 9999 && t.GetMonth() >= 1 && t.GetMonth() <= 12 &&
         t.GetDay() <= 31 && t.GetHour() <= 23 && t.GetMinute() <= 59 && t.GetSecond() <= 59 &&
         std::abs(t.GetBias()) < 15 * 60;
}

void CheckPrinted(const DateTime& time) {
  const std::unique_ptr<char[]> text(time.ToString());
  const std::unique_ptr<char[]> brief(time.ToShortString());
  FUZZ_CHECK(std::strlen(text.get()) <= 32 && std::strlen(brief.get()) <= 23);
  if (!IsInRange(time)) return;  // fields out of range are printed as the nearest value
  const DateTime again(text.get(), static_cast<unsigned int>(std::strlen(text.get())));
  FUZZ_CHECK(again == time);
  FUZZ_CHECK(again.GetUtcTime() == time.GetUtcTime());
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  if (size == sizeof(long long) + 1) {
    const bool local = input.Byte() % 2 == 1;
    long long microseconds = 0;
    std::memcpy(&microseconds, data + 1, sizeof(microseconds));
    constexpr long long kLimit = 290000LL * 366 * 24 * 3600 * 1000000;  // the stated range
    if (microseconds > -kLimit && microseconds < kLimit)
      CheckPrinted(DateTime(microseconds, local));
  }
  const std::string text = input.Rest();
  try {
    CheckPrinted(DateTime(text.c_str(), static_cast<unsigned int>(text.size())));
  } catch (const KELib::DateTimeFormatException&) {
  }
  return 0;
}
