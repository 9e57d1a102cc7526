// SPDX-License-Identifier: MIT
#include "xml/KEXmlReader.h"

#include <gtest/gtest.h>

#include <string>

#include "support/Answers.h"
#include "xml/Movements.h"
#include "xml/XmlException.h"

namespace KELib::Xml {
namespace {

const char* const kMalformed = "XmlException: Malformed XML. Missing element end.";
const char* const kNothingToRead = "XmlException: Cannot use empty input XML";
const char* const kAtTheEnd = "XmlException: Cannot read beyond length of input XML";

KEXmlReader ReaderOf(const std::string& text, unsigned int start = 0) {
  KEString input(text.c_str());
  return KEXmlReader(input, false, start);
}

std::string ValueOf(const Row& row, bool strict) {
  KEXmlReader reader = ReaderOf(row[1]);
  reader.SetStrict(strict);
  KEString value("stale");
  return reader.GetNamedElementValue("v", value) ? value.Cstr() : "not found";
}

std::string AttributeAndValue(const Row& row) {
  KEXmlReader reader = ReaderOf(row[1]);
  KEString name, attribute, value;
  reader.GetElementAttributeNameAndValue("v", name, attribute);
  reader.GetElementValue("v", value);
  return std::string(name.Cstr()) + "=" + attribute.Cstr() + " " + value.Cstr();
}

std::string TokenTypeOf(const Row& row) {
  const auto last = static_cast<XmlTokenType>(std::stoi(row[1]));
  return std::to_string(GetTokenType(last, row[2][0], row[2].c_str()[1]));
}

TEST(KEXmlReader, AnswersTheCases) {
  ExpectAnswers(KECPP_TEST_DATA "/cases/reader.txt",
                {{"value", [](const Row& row) { return ValueOf(row, false); }},
                 {"strict value", [](const Row& row) { return ValueOf(row, true); }},
                 {"attribute and value", AttributeAndValue},
                 {"token", TokenTypeOf}});
}

TEST(KEXmlReader, RefusesEmptyAndExhaustedInput) {
  KEXmlReader empty, full = ReaderOf("<a>");
  KEString a, b;
  full.MoveTo(100, 2);
  EXPECT_EQ(3u, full.Pos());
  for (const Movement move : kMovements) {
    EXPECT_EQ(kNothingToRead, Thrown([&] { move(empty, "a", a, b); }));
    EXPECT_EQ(kAtTheEnd, Thrown([&] { move(full, "a", a, b); }));
  }
  KEString text("<a>");
  EXPECT_EQ("XmlException: Cannot search beyond end of input XML",
            Thrown([&] { ThrowExceptionOnLimits(text, 3, KEString::NPos); }));
}

TEST(KEXmlReader, OwnsOrCopiesItsInput) {
  KEString text("<a>1</a>"), out;
  KEXmlReader reader(text, true, 0);
  EXPECT_STREQ("<a>1</a>", text.Cstr());
  reader.SetStartPos(7);
  reader.SetStartPos(KEString::NPos);
  EXPECT_EQ(0u, reader.Pos());
  reader.SetStartPos(5);
  EXPECT_FALSE(reader.End());
  reader.SetStartPos(6);
  EXPECT_TRUE(reader.End()) << "two characters are left";
  reader.MoveContentTo(out);
  EXPECT_STREQ("<a>1</a>", out.Cstr());
  EXPECT_EQ(0u, reader.GetInputLength() + reader.Pos());
}

TEST(KEXmlReader, AnswersQuestionsByPrefix) {
  KEXmlReader reader = ReaderOf("<PropSet x=\"a>b\"><![CDATA[c]]></PropSet><d> <e/></d>");
  EXPECT_TRUE(reader.IsElementTag("Prop"));
  EXPECT_FALSE(reader.IsElementTag("rop"));
  EXPECT_FALSE(reader.IsElementTag(""));
  reader.SkipElementTag("PropSet");
  EXPECT_TRUE(reader.InsideElementTag());
  EXPECT_FALSE(reader.HasComplexContent("PropSet")) << "a section is a value";
  reader.SkipElementStartClose();
  EXPECT_TRUE(reader.IsValueCData());
  KEString value;
  reader.GetCDataValue("PropSet", value);
  EXPECT_TRUE(reader.IsElementEndTag("Prop"));
  ASSERT_TRUE(reader.FindElementTag("d"));
  EXPECT_TRUE(reader.HasComplexContent("d"));
  ASSERT_TRUE(reader.FindElementTag("e"));
  EXPECT_FALSE(reader.HasComplexContent("e"));
  KEXmlReader cut = ReaderOf("<a b='c>");
  ASSERT_TRUE(cut.FindElementTag("a"));
  EXPECT_FALSE(cut.HasComplexContent("a")) << "a question does not throw";
}

TEST(KEXmlReader, SearchesLookAtTheFirstOccurrenceOnly) {
  KEXmlReader reader = ReaderOf("<t>x</t><x>1</x></t>");
  EXPECT_FALSE(reader.FindElementTag("x"));
  EXPECT_FALSE(reader.FindElementTag("absent"));
  EXPECT_FALSE(reader.FindAndSkipElementEndTag("x"));
  EXPECT_EQ(0u, reader.Pos());
  reader.SetStartPos(5);
  EXPECT_TRUE(reader.FindElementTag("x"));
  EXPECT_TRUE(reader.FindAndSkipElementEndTag("x"));
  EXPECT_STREQ("</t>", reader.Str() + reader.Pos());
  EXPECT_TRUE(reader.State().WasLastType(13));
  EXPECT_TRUE(reader.FindAndSkipElementEndTag("t")) << "the end of the text is no error";
}

TEST(KEXmlReader, TakesAttributes) {
  KEXmlReader reader = ReaderOf("<obj\r\n\txsi:type='x'  type=\"a>b\" k = \"\"/><next>1</next>");
  KEString name, value;
  const char* const expected[][2] = {{"xsi:type", "x"}, {"type", "a>b"}, {"k", ""}};
  ASSERT_TRUE(reader.FindElementTag("obj"));
  for (const auto& pair : expected) {
    reader.GetAttributeNameAndValue(name, value);
    EXPECT_STREQ(pair[0], name.Cstr());
    EXPECT_STREQ(pair[1], value.Cstr());
  }
  name.Clear();
  for (int i = 0; i < 3; ++i) reader.GetAttributeNameAndValue(name, value);
  EXPECT_TRUE(name.Empty());
  EXPECT_TRUE(reader.State().WasLastType(6));
  EXPECT_STREQ("<next>1</next>", reader.Str() + reader.Pos());
}

TEST(KEXmlReader, TakesNoAttributeOfOneElementForAnothersValue) {
  KEXmlReader reader = ReaderOf("<o a=\"1\"/><p>next</p>");
  KEString name, value;
  ASSERT_TRUE(reader.FindElementTag("o"));
  for (int i = 0; i < 4; ++i) reader.GetAttributeNameAndValue(name, value);
  EXPECT_TRUE(name.Empty());
  reader.GetElementValue("o", value);
  EXPECT_TRUE(value.Empty());
  EXPECT_TRUE(reader.IsElementTag("p"));
}

TEST(KEXmlReader, TakesInnerXmlUnchanged) {
  const char* const text = "<d k='1'>\n <d>x</d><!-- </d> --><![CDATA[</d>]]>\n</d><e/><f>1</f>";
  for (int asked = 0; asked < 3; ++asked) {
    KEXmlReader reader = ReaderOf(text);
    KEString name, value, content;
    ASSERT_TRUE(reader.FindElementTag("d"));
    for (int i = 0; i < asked; ++i) reader.GetAttributeNameAndValue(name, value);
    reader.GetElementContent("d", content);
    EXPECT_STREQ("\n <d>x</d><!-- </d> --><![CDATA[</d>]]>\n", content.Cstr());
    EXPECT_TRUE(reader.IsElementTag("e"));
    reader.SkipElementTag("e");
    reader.GetElementContent("e", content);
    EXPECT_TRUE(content.Empty());
    ASSERT_TRUE(reader.FindElementTag("f"));
    reader.GetElementContent("f", content);
    EXPECT_STREQ("1", content.Cstr());
    EXPECT_TRUE(reader.End());
  }
  KEString content;
  KEXmlReader crossed = ReaderOf("<a><b></a></b>");
  ASSERT_TRUE(crossed.FindElementTag("a"));
  EXPECT_EQ(kMalformed, Thrown([&] { crossed.GetElementContent("a", content); }));
}

TEST(KEXmlReader, AppendsTagsAndStrings) {
  KEXmlReader reader = ReaderOf("<ns:tag/>\n\n  key=value;");
  KEString out("+");
  reader.GetElementTag(out);
  EXPECT_STREQ("+ns:tag", out.Cstr());
  reader.SkipTillChar('\n');
  reader.SkipLineEndings();
  reader.SkipChar(' ');
  reader.GetStringUptilChar('=', out);
  EXPECT_STREQ("+ns:tagkey", out.Cstr());
  EXPECT_EQ('=', reader.Str()[reader.Pos()]);
  EXPECT_EQ(kMalformed, Thrown([&] { reader.SkipTillChar('#'); }));
}

TEST(XmlEndTags, AreFoundBackwards) {
  KEString text("<a><b>1</b ></a>x</"), name("old");
  unsigned int pos = KEString::NPos;
  EXPECT_TRUE(BackupToElementEndTag("b", text, pos));
  EXPECT_EQ(7u, pos);
  EXPECT_FALSE(BackupToElementEndTag("b", text, pos));
  EXPECT_FALSE(GetPrevElementEndTag(text, pos, name));
  EXPECT_STREQ("old", name.Cstr());
  pos = 16;
  EXPECT_TRUE(GetPrevElementEndTag(text, pos, name));
  EXPECT_STREQ("a", name.Cstr());
  EXPECT_EQ(12u, pos);

  std::string many;
  for (int i = 0; i < 500000; ++i) many += "</a";
  KEString hostile(many.c_str());
  pos = KEString::NPos;
  EXPECT_FALSE(BackupToElementEndTag("b", hostile, pos)) << "and the search ends";
}

}  // namespace
}  // namespace KELib::Xml
