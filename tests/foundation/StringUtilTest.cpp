// SPDX-License-Identifier: MIT
#include "foundation/StringUtil.h"

#include <memory>
#include <string>

#include "foundation/KEString.h"
#include "support/Answers.h"

namespace KELib {
namespace {

template <auto parse>
std::string Parsed(const Row& row) {
  return std::to_string(parse(row[1].c_str()));
}

TEST(StringUtilTest, ParsesTheCases) {
  ExpectAnswers(KECPP_TEST_DATA "/cases/values.txt",
                {{"int", Parsed<StringUtil::ParseInt>},
                 {"uint", Parsed<StringUtil::ParseUInt>},
                 {"long", Parsed<StringUtil::ParseLong>},
                 {"ulong", Parsed<StringUtil::ParseULong>},
                 {"byte", Parsed<StringUtil::ParseByte>},
                 {"short", Parsed<StringUtil::ParseShort>},
                 {"ushort", Parsed<StringUtil::ParseUShort>},
                 {"bool", Parsed<StringUtil::ParseBool>},
                 {"float", Parsed<StringUtil::ParseFloat>},
                 {"double", Parsed<StringUtil::ParseDouble>},
                 {"is a number", Parsed<StringUtil::IsNumber>}});
  EXPECT_FALSE(StringUtil::ParseBool(nullptr));
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
