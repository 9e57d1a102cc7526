// SPDX-License-Identifier: MIT
#include "foundation/KEString.h"

#include <new>
#include <string>

#include "support/Answers.h"

namespace KELib {
namespace {

unsigned int Number(const std::string& field) {
  return static_cast<unsigned int>(std::stoul(field));
}

std::string Position(unsigned int found) {
  return found == KEString::NPos ? "none" : std::to_string(found);
}

std::string Erased(const Row& row) {
  KEString text(row[1].c_str());
  text.Erase(Number(row[2]), Number(row[3]));
  return text.Cstr();
}

std::string Substring(const Row& row) {
  return KEString(row[1].c_str()).Substring(Number(row[2]), Number(row[3])).Cstr();
}

std::string Found(const Row& row) {
  return Position(KEString(row[1].c_str()).Find(row[2].c_str(), Number(row[3])));
}

std::string FoundCharacter(const Row& row) {
  return Position(KEString(row[1].c_str()).Find(row[2][0], Number(row[3])));
}

std::string CharacterAt(const Row& row) {
  const char at[] = {KEString(row[1].c_str()).At(Number(row[2])), '\0'};
  return at;
}

TEST(KEStringTest, AnswersTheCases) {
  ExpectAnswers(KECPP_TEST_DATA "/cases/strings.txt", {{"erase", Erased},
                                                       {"substring", Substring},
                                                       {"find", Found},
                                                       {"find character", FoundCharacter},
                                                       {"at", CharacterAt}});
  EXPECT_THROW(KEString("abcdef").Substring(4, 2), std::bad_alloc);
}

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
  KEString text;
  text.Append("abc", 1);
  text.Append('-');
  text.Append('\0');
  text.Append(true);
  text.Append(static_cast<short>(-8));
  text.Append(4294967295U);
  text.Append(-1LL);
  text.Append(2.5);
  text.Append(static_cast<const char*>(nullptr));
  EXPECT_STREQ(text.Cstr(), "abc-true-84294967295-12.5");
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
  KEString latin("\xc4z");
  latin.ToLower();  // a negative char must not index in front of the table
  EXPECT_EQ(latin.Length(), 2U);
}

}  // namespace
}  // namespace KELib
