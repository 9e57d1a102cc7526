// SPDX-License-Identifier: MIT
#include "xml/KEXmlCursor.h"

#include <gtest/gtest.h>

#include <string>

#include "support/Answers.h"
#include "xml/KEXmlReader.h"

namespace KELib::Xml {
namespace {

const char* const kMalformed = "XmlException: Malformed XML. Missing element end.";

// The input's block ends with the text, so that a sanitizer sees a step beyond it.
KEXmlReader ReaderOf(const std::string& text) {
  KEString input(text.c_str());
  return KEXmlReader(input, false, 0);
}

std::string Copy(const XmlSlice& slice) {
  return std::string(slice.text, slice.length);
}

// "name(attribute=value)[children]" of everything in the element that the cursor stands in.
std::string Outline(KEXmlCursor& cursor) {
  std::string all;
  XmlSlice name, attribute, value;
  while (cursor.NextChild(name)) {
    all += Copy(name);
    while (cursor.NextAttribute(attribute, value)) {
      all += "(" + Copy(attribute) + "=" + Copy(value) + ")";
    }
    if (!cursor.Enter()) continue;
    all += "[" + Outline(cursor) + "]";
    cursor.Leave(name);
  }
  return all;
}

std::string OutlineOf(const std::string& text) {
  KEXmlReader reader = ReaderOf(text);
  KEXmlCursor cursor(reader);
  const std::string all = Outline(cursor);
  return cursor.AtEnd() ? all : all + " and an end tag";
}

std::string TextOf(const std::string& text) {
  KEXmlReader reader = ReaderOf(text);
  KEXmlCursor cursor(reader);
  KEStringBuffer joined;
  XmlSlice name;
  if (!cursor.NextChild(name)) return "no element";
  const std::string found = Copy(cursor.Text(name, joined));
  return cursor.AtEnd() ? found : found + " and more";
}

// A short cut takes what the general operations would have taken, or nothing.
std::string ShortCutIn(const std::string& text) {
  KEXmlReader reader = ReaderOf(text);
  KEXmlCursor quick(reader), general(reader);
  XmlSlice slice, name;
  const bool taken = quick.TakeText("<v", "</v>", slice);
  if (taken && general.NextChild(name)) {
    KEStringBuffer joined;
    EXPECT_EQ(Copy(general.Text(name, joined)), Copy(slice)) << text;
  }
  EXPECT_EQ(general.Position(), quick.Position()) << text;
  return taken ? "taken" : "not taken";
}

std::string LookAheadIn(const std::string& text) {
  KEXmlReader reader = ReaderOf(text);
  KEXmlCursor cursor(reader);
  XmlSlice name;
  EXPECT_TRUE(cursor.NextChild(name));
  const char* const before = cursor.Position();
  const bool children = cursor.HasChildElements();
  EXPECT_EQ(before, cursor.Position());
  return children ? "children" : "none";
}

TEST(KEXmlCursor, AnswersTheCases) {
  ExpectAnswers(KECPP_TEST_DATA "/cases/cursor.txt",
                {{"outline", [](const Row& row) { return OutlineOf(row[1]); }},
                 {"text", [](const Row& row) { return TextOf(row[1]); }},
                 {"short cut", [](const Row& row) { return ShortCutIn(row[1]); }},
                 {"look ahead", [](const Row& row) { return LookAheadIn(row[1]); }}});
}

TEST(KEXmlCursor, ShortCutsTakeAttributesAndTags) {
  KEXmlReader reader = ReaderOf("<s><t><u k=''><v a='1>'>x</v><v a='2' b=''>y</v></u></t></s>");
  KEXmlCursor cursor(reader);
  XmlSlice attribute, text;
  EXPECT_FALSE(cursor.PassTag("<v>"));
  EXPECT_TRUE(cursor.PassTag("<s>"));
  EXPECT_TRUE(cursor.PassStartTag("<t"));
  EXPECT_TRUE(cursor.PassStartTag("<u"));
  EXPECT_TRUE(cursor.TakeText("<v a='", "</v>", attribute, text));
  EXPECT_EQ("1> x", Copy(attribute) + " " + Copy(text));
  EXPECT_FALSE(cursor.TakeText("<v a='", "</v>", attribute, text));
  for (const char* none : {"<t>", "a/>", "<", ""}) {
    KEXmlReader other = ReaderOf(none);
    EXPECT_FALSE(KEXmlCursor(other).PassEndTag(text)) << none;
  }
}

TEST(KEXmlCursor, TakesOverFromTheReaderAndHandsBack) {
  KEXmlReader reader = ReaderOf("<r><set id='1'><x>1</x></set><x>2</x></r>");
  ASSERT_TRUE(reader.FindElementTag("set"));
  KEXmlCursor cursor(reader);
  XmlSlice name, value;
  EXPECT_TRUE(cursor.InStartTag());
  ASSERT_TRUE(cursor.NextAttribute(name, value));
  ASSERT_TRUE(cursor.Enter());
  EXPECT_FALSE(cursor.InStartTag());
  cursor.LeaveContent({"set", 3});
  ASSERT_TRUE(cursor.PassEndTag(name));
  EXPECT_TRUE(name.Is("set"));
  cursor.MoveReader();
  KEString text;
  EXPECT_TRUE(reader.IsElementTag("x"));
  EXPECT_TRUE(reader.GetNamedElementValue("x", text));
  EXPECT_STREQ("2", text.Cstr());
}

TEST(KEXmlCursor, SurvivesACutAtEveryByte) {
  const std::string document =
      "<?xml version=\"1.0\"?><a k='x>y'><!-- </a> --><b/>\n<c j=\"1\">t<![CDATA[</c>]]>u</c></a>";
  EXPECT_EQ("a(k=x>y)[bc(j=1)[]]", OutlineOf(document));
  for (std::size_t size = 0; size < document.size(); ++size) {
    const std::string cut = document.substr(0, size);
    std::string outline;
    const bool refused = Thrown([&] { outline = OutlineOf(cut); }) == kMalformed;
    // The prolog may be whole or not begun; nothing behind it can be taken for a whole document.
    EXPECT_TRUE(refused || (size <= 21 && outline.empty())) << cut;
    EXPECT_EQ(kMalformed, Thrown([&] { TextOf(cut + "<"); })) << cut;
  }
}

// The stack would not carry a call for each level. Fewer pieces than levels: a sanitizer looks at
// all of the text that is left for each of them.
TEST(KEXmlCursor, BearsManyLevelsAndPieces) {
  constexpr int kLevels = 1000000, kPieces = 50000;
  std::string deep, pieces;
  for (int i = 0; i < kLevels; ++i) deep += "<a>";
  EXPECT_EQ(kMalformed, Thrown([&] { TextOf(deep); }));
  for (int i = 0; i < kLevels; ++i) deep += "</a>";
  EXPECT_EQ("", TextOf(deep));
  for (int i = 0; i < kPieces; ++i) pieces += "<!---->1<![CDATA[2]]>";
  EXPECT_EQ(2u * kPieces, TextOf("<v>" + pieces + "</v>").size());
}

}  // namespace
}  // namespace KELib::Xml
