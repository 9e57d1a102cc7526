// SPDX-License-Identifier: MIT
#include "foundation/KEStringBuffer.h"

#include <gtest/gtest.h>

#include <random>
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
  EXPECT_EQ(KEStringBuffer(300).Capacity(), 300U);
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
  KEStringBuffer buffer(source, 300);
  EXPECT_TRUE(source.Empty());
  EXPECT_GE(buffer.Capacity(), text.size() + 300);
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

TEST(KEStringBufferTest, TakesOverAndCopies) {
  KEStringBuffer buffer(0), other(0);
  buffer.Append("text");
  other.Transfer(buffer);
  EXPECT_EQ(buffer.Length() + buffer.Capacity(), 0U);
  EXPECT_EQ(other.Capacity(), 128U);
  KEStringBuffer copy(other);
  EXPECT_NE(copy.Cstr(), other.Cstr());
  const KEStringBuffer& itself = copy;
  copy = itself;
  copy.Transfer(copy);
  copy.Transfer(static_cast<KEString&>(copy));
  EXPECT_EQ(copy.Length(), 4U);
  EXPECT_EQ(copy.Capacity(), 128U);
  buffer = copy += "!";
  copy = buffer.Cstr() + 1;
  EXPECT_STREQ(copy.Cstr(), "ext!");
  EXPECT_STREQ(buffer.Cstr(), "text!");
  EXPECT_EQ(buffer.At(4), '!');
  EXPECT_EQ(buffer.At(5), '\0');
  buffer.Clear();
  EXPECT_EQ(buffer.Length() + buffer.Capacity(), 0U);
  KEStringEdit(copy).Text() = "new";
  EXPECT_EQ(copy.Length(), 3U);
}

// One buffer and a text; every operation does the same to both.
struct Model {
  KEStringBuffer buffer{0};
  KEString& base = buffer;
  std::string text;
  std::mt19937 random;

  unsigned int Below(std::size_t n) { return static_cast<unsigned int>(random() % n); }
  std::string Piece() { return std::string(Below(9) == 0 ? Below(3000) : Below(40), Letter()); }
  char Letter() { return static_cast<char>(1 + Below(126)); }
  unsigned int Size() const { return static_cast<unsigned int>(text.size()); }
  unsigned int Position() { return Below(text.size() + 3); }

  void Append(bool throughBase) {
    const std::string piece = Piece();
    const KEString whole(piece.c_str());
    throughBase ? void(base += whole) : void(buffer += whole);
    text += piece;
  }
  void AppendPart() {
    const unsigned int from = Below(text.size() + 1);
    buffer.UnsafeAppend(buffer.Cstr() + from, 5);
    text += text.substr(from, 5);
  }
  void AppendNumber() {
    const auto number = static_cast<unsigned int>(random());
    const char letter = Letter();
    buffer.Append(number);
    buffer.Append(0.5);
    buffer.Append(letter);
    text += std::to_string(number) + "0.5" + letter;
  }
  void AppendUnsafely() {
    base.Resize(1 + Below(50));
    const char letter = Letter();
    base.UnsafeAppend(letter);
    text += letter;
  }
  void Erase(bool throughBase) {
    const unsigned int from = Position(), to = Position();
    throughBase ? base.Erase(from, to) : buffer.Erase(from, to);
    if (from < to && from < text.size()) text.erase(from, to - from);
  }
  void Replace() {
    text = Piece();
    KEString taken(text.c_str(), Below(200));
    switch (Below(5)) {
      case 0:
        base = text.c_str();
        break;
      case 1:
        base = KEString(text.c_str());
        break;
      case 2:
        Below(2) == 0 ? base.AssignExact(text.data(), Size())
                      : buffer.AssignExact(text.data(), Size());
        break;
      case 3:
        base.Transfer(taken);
        break;
      default:
        buffer.Transfer(taken);
        break;
    }
  }
  void TakeOut() {
    KEString taken;
    Below(2) == 0 ? taken.Transfer(base) : buffer.Clear();
    text.clear();
  }
  void Step() {
    const auto step = Below(24);
    if (step < 6) return Append(step % 2 == 0);
    if (step < 9) return AppendNumber();
    if (step < 12) return AppendPart();
    if (step < 14) return AppendUnsafely();
    if (step < 18) return Erase(step % 2 == 0);
    if (step < 20) return Replace();
    if (step == 20) return TakeOut();
    if (step == 21) return base.Clear(), text.clear();
    step == 22 ? base.Resize(Below(300)) : buffer.Resize(Below(300));
  }
};

// What the base does to a buffer goes unnoticed by its fields: the next operation must notice.
TEST(KEStringBufferTest, BehavesAsATextWhicheverClassTheOperationsAreCalledOn) {
  Model model;
  for (int i = 0; i < 50000; ++i) {
    model.Step();
    ASSERT_EQ(model.text, model.buffer.Cstr()) << i;
    ASSERT_TRUE(i % 3 != 0 || model.text.size() == model.buffer.Length()) << i;
  }
}

}  // namespace
}  // namespace KELib
