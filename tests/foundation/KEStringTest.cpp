// SPDX-License-Identifier: MIT
#include "foundation/KEString.h"

#include <gtest/gtest.h>

#include <new>
#include <tuple>

namespace KELib {
namespace {

TEST(KEStringTest, LengthArgumentsReserveButNeverTruncate) {
  EXPECT_STREQ(KEString("abcdef", 3).Cstr(), "abcdef");
  KEString roomy("ab", 10);
  EXPECT_EQ(roomy.Length(), 2U);
  for (unsigned int i = 2; i <= 10; ++i) EXPECT_EQ(roomy.UnsafeAt(i), '\0');
  EXPECT_TRUE(KEString(5U).Empty());
  EXPECT_TRUE(KEString(static_cast<const char*>(nullptr)).Empty());
  EXPECT_THROW(KEString(0x80000000U), std::bad_alloc);
}

TEST(KEStringTest, AppendsWholeTextsAndFormatsNumbers) {
  KEString text, roomy(200U);
  text.Append("abc", 1);
  roomy.UnsafeAppend("abc", 3);
  const auto append = [&](const auto& value) {
    text.Append(value);
    roomy.UnsafeAppend(value);
  };
  append('-');
  append('\0');
  append(true);
  append(static_cast<short>(-8));
  append(4294967295U);
  append(-1);
  append(-1LL);
  append(18446744073709551615ULL);
  append(2.5F);
  append(2.5);
  append(KEString("z"));
  append(static_cast<const char*>(nullptr));
  EXPECT_STREQ(text.Cstr(), "abc-true-84294967295-1-1184467440737095516152.5000002.5z");
  EXPECT_STREQ(roomy.Cstr(), text.Cstr());
}

TEST(KEStringTest, SelfArgumentsWork) {
  KEString text("abcdef");
  text = text.Cstr() + 2;
  EXPECT_STREQ(text.Cstr(), "cdef");
  text += text;
  text.Attach(text.Str());
  text.Transfer(text);
  text = *&text;
  EXPECT_STREQ(text.Cstr(), "cdefcdef");
}

TEST(KEStringTest, PositionsAreClampedAndASubstringKeepsTheWholeTail) {
  const KEString text("abcdef");
  EXPECT_EQ(text.At(99), 'f');
  EXPECT_EQ(text[6], '\0');
  EXPECT_EQ(KEString().At(7), '\0');
  EXPECT_EQ(text.Find('a', 0), 0U);
  EXPECT_EQ(text.Find('f', 5), 5U);
  EXPECT_EQ(text.Find('x', 6), KEString::NPos);
  EXPECT_EQ(text.Find(KEString("bc"), 1), 1U);
  EXPECT_EQ(text.Find("bc", 4294967295U), KEString::NPos);
  EXPECT_EQ(KEString().Find('a', 0), KEString::NPos);
  EXPECT_STREQ(text.Substring(1, 3).Cstr(), "bcdef");
  EXPECT_STREQ(text.Substring(2, 0).Cstr(), "cdef");
  EXPECT_STREQ(text.Substring(9, 0).Cstr(), "");
  EXPECT_THROW(text.Substring(4, 2), std::bad_alloc);
}

TEST(KEStringTest, ErasesWithinTheText) {
  KEString text("abcdef");
  const std::tuple<unsigned int, unsigned int, const char*> steps[] = {
      {1, 3, "adef"}, {9, 12, "adef"}, {3, 1, "adef"}, {0, 0, "adef"}, {2, 99, "ad"}, {0, 2, ""}};
  for (const auto& [from, to, left] : steps) {
    text.Erase(from, to);
    EXPECT_STREQ(text.Cstr(), left) << from;
  }
}

TEST(KEStringTest, EmptyStringsShareOneUntouchedBuffer) {
  KEString first, second;
  EXPECT_EQ(first.Cstr(), second.Cstr());
  first.Clear();
  first.Erase(0, 5);
  first.ToUpper();
  EXPECT_EQ(first.UnsafeAppend("no room"), 0U);
  EXPECT_STREQ(second.Cstr(), "");

  char* out = nullptr;
  first = "text";
  first.Detach(out);
  EXPECT_TRUE(first.Empty());
  second.Attach(out);
  EXPECT_STREQ(second.Cstr(), "text");
  first.Transfer(second);
  EXPECT_EQ(second.Cstr(), KEString().Cstr());
}

TEST(KEStringTest, ComparesAndHashesBytesAsSigned) {
  EXPECT_EQ(KEString("x").Compare(static_cast<const char*>(nullptr)), 1);
  EXPECT_TRUE(KEString().Equals(static_cast<const char*>(nullptr)));
  EXPECT_TRUE(KEString("AbC").EqualsI("aBc"));
  EXPECT_EQ(HashText("\xff", 1), 4294967295U);
  KEString latin("\xc4Z");
  latin.ToLower();  // a negative char must not index in front of the table
  EXPECT_STREQ(latin.Cstr(), "\xc4z");
  latin.ToUpper();
  EXPECT_STREQ(latin.Cstr(), "\xc4Z");
}

}  // namespace
}  // namespace KELib
