// SPDX-License-Identifier: MIT
#include "foundation/KEStringBuffer.h"

#include <gtest/gtest.h>

#include <string>

namespace KELib {
namespace {

TEST(KEStringBufferTest, CapacityGrowsByWhatIsNeededAtLeast128) {
  KEStringBuffer buffer(0);
  EXPECT_EQ(buffer.Capacity(), 128U);
  buffer.Append(std::string(200, 'a').c_str());
  EXPECT_EQ(buffer.Capacity(), 200U);
  buffer.Append('b');
  EXPECT_EQ(buffer.Capacity(), 328U);
  EXPECT_EQ(buffer.Length(), 201U);
}

TEST(KEStringBufferTest, ReservedRoomIsZeroedAndFilledByEveryKindOfValue) {
  KEStringBuffer buffer(0);
  for (int i = 0; i < 60; ++i) buffer.Append("0123456789ABCDEF0123456789abcdef");
  buffer.Resize(500);  // within the block and beyond it
  buffer.Resize(5000);
  for (unsigned int i = buffer.Length(); i <= buffer.Capacity(); ++i) {
    ASSERT_EQ(buffer.UnsafeAt(i), '\0') << i;
  }
  buffer = KEString("n:");
  EXPECT_EQ(buffer.UnsafeAppend(static_cast<short>(-32768)), 6U);
  EXPECT_EQ(buffer.UnsafeAppend('\0') + buffer.UnsafeAppend(true), 4U);
  EXPECT_EQ(buffer.UnsafeAppend(KEString("xy")), 2U);
  buffer.Append(-9223372036854775807LL - 1);
  buffer.Append(18446744073709551615ULL);
  buffer.Append(-3.4e38F);  // the widest text of all
  EXPECT_EQ(std::string("n:-32768truexy-922337203685477580818446744073709551615") +
                std::to_string(-3.4e38F),
            buffer.Cstr());
}

TEST(KEStringBufferTest, ManySmallAppendsKeepTheText) {
  KEStringBuffer buffer(0);
  std::string expected;
  for (int i = 0; i < 20000; ++i) {
    buffer.Append(i);
    buffer.Append(", ", 1);
    expected += std::to_string(i) + ",";
  }
  EXPECT_EQ(expected, buffer.Cstr());
  EXPECT_EQ(expected.size(), buffer.Length());
  buffer.Append(buffer.Str());  // moves while it is read
  EXPECT_EQ(expected + expected, buffer.Cstr());
}

TEST(KEStringBufferTest, TakesLongTextsOverAndGrowsBehindThem) {
  const std::string text(1000000, 'x');  // an exact block far from any step of the growth
  KEString source(text.c_str());
  KEStringBuffer buffer(source, 0);
  EXPECT_TRUE(source.Empty());
  char* attached = new char[text.size() + 1];
  text.copy(attached, text.size());
  attached[text.size()] = '\0';
  KEStringBuffer other(0);
  other.Attach(attached);
  buffer.Append("tail");
  other.Append("tail");
  EXPECT_EQ(text + "tail", buffer.Cstr());
  EXPECT_EQ(text + "tail", other.Cstr());
}

TEST(KEStringBufferTest, HealsWhenItsTextWasTakenThroughTheBase) {
  KEStringBuffer buffer(0);
  buffer.Append("text");
  KEString taker;
  taker.Transfer(static_cast<KEString&>(buffer));
  EXPECT_EQ(buffer.Length(), 0U);
  buffer.Append("new");
  EXPECT_STREQ(buffer.Cstr(), "new");
  buffer.Erase(1, 2);
  EXPECT_EQ(buffer.Length(), 2U);
  EXPECT_EQ(buffer.At(2), '\0');
  buffer.Clear();
  EXPECT_EQ(buffer.Capacity(), 0U);
  KEStringBuffer copy(buffer);
  copy = taker.Cstr();
  copy += "!";
  EXPECT_STREQ(copy.Cstr(), "text!");
}

}  // namespace
}  // namespace KELib
