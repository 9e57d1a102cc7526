// SPDX-License-Identifier: MIT
#include "foundation/StringUtil.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "foundation/KEException.h"
#include "foundation/KEString.h"

namespace KELib {
namespace {

TEST(StringUtilTest, ParsesIntegersWithin32Bits) {
  EXPECT_EQ(StringUtil::ParseInt(" \t42 \r\n"), 42);
  EXPECT_EQ(StringUtil::ParseInt(""), 0);
  EXPECT_EQ(StringUtil::ParseInt("-2147483648"), -2147483647 - 1);
  EXPECT_EQ(StringUtil::ParseUInt("-1"), 4294967295U);
  EXPECT_EQ(StringUtil::ParseLong("2147483647"), 2147483647LL);
  EXPECT_THROW(StringUtil::ParseInt("42x"), NumberFormatException);
  EXPECT_THROW(StringUtil::ParseInt("12345678901"), NumberRangeException);
  EXPECT_THROW(StringUtil::ParseInt("99999999999999999999x"), NumberRangeException);
  EXPECT_THROW(StringUtil::ParseLong("2147483648"), NumberRangeException);
  EXPECT_THROW(StringUtil::ParseULong("4294967296"), NumberRangeException);
  EXPECT_THROW(StringUtil::ParseUInt("-4294967296"), NumberRangeException);
  EXPECT_THROW(StringUtil::ParseByte("128"), NumberRangeException);
  EXPECT_THROW(StringUtil::ParseShort("-32769"), NumberRangeException);
  EXPECT_THROW(StringUtil::ParseUShort("1"), NumberRangeException);
}

TEST(StringUtilTest, ParsesOtherValues) {
  EXPECT_TRUE(StringUtil::ParseBool("TRUE"));
  EXPECT_FALSE(StringUtil::ParseBool("1"));
  EXPECT_FALSE(StringUtil::ParseBool(nullptr));
  EXPECT_DOUBLE_EQ(StringUtil::ParseDouble("2.5e3 and more"), 2500.0);
  EXPECT_THROW(StringUtil::ParseFloat(""), NumberFormatException);  // the end of input, not 0
  EXPECT_THROW(StringUtil::ParseDouble("x"), NumberFormatException);
  EXPECT_TRUE(StringUtil::IsNumber(KEString("0123456789")));
  EXPECT_FALSE(StringUtil::IsNumber(KEString("-1")));
  EXPECT_FALSE(StringUtil::IsNumber(KEString()));
}

TEST(StringUtilTest, FormatsIntoNewArrays) {
  const auto text = [](char* array) { return std::string(std::unique_ptr<char[]>(array).get()); };
  EXPECT_EQ(text(StringUtil::LongToString(-9223372036854775807LL - 1)), "-9223372036854775808");
  EXPECT_EQ(text(StringUtil::ULongToString(18446744073709551615ULL)), "18446744073709551615");
  EXPECT_EQ(text(StringUtil::FloatToString(1.5F)), "1.500000");
  EXPECT_EQ(text(StringUtil::DoubleToString(1e300)), "1e+300");
  EXPECT_EQ(text(StringUtil::ByteToString('c')), "c");
  EXPECT_EQ(text(StringUtil::CopyString("abcdef", 3)), "abc");
  EXPECT_EQ(StringUtil::CopyString(nullptr), nullptr);
}

}  // namespace
}  // namespace KELib
