// SPDX-License-Identifier: MIT
#include "xml/KEXmlReader.h"

#include <gtest/gtest.h>

#include <string>

#include "xml/Movements.h"
#include "xml/XmlConstants.h"
#include "xml/XmlException.h"

namespace KELib::Xml {
namespace {

KEXmlReader ReaderOf(const std::string& text, unsigned int start = 0) {
  KEString input(text.c_str());
  return KEXmlReader(input, false, start);
}

template <typename Step>
std::string FailureOf(Step step) {
  try {
    step();
  } catch (const XmlException& e) {
    return e.What();
  }
  return "nothing was thrown";
}

std::string ValueOf(const std::string& text, const char* name, bool strict = false) {
  KEXmlReader reader = ReaderOf(text);
  reader.SetStrict(strict);
  KEString value("stale");
  if (!reader.GetNamedElementValue(name, value)) return "not found";
  return value.Cstr();
}

TEST(TokenType, IsNarrowAboutLetters) {
  const struct {
    XmlTokenType last;
    const char* text;
    XmlTokenType expected;
  } cases[] = {{0, "ax", 0},  {0, "bx", 2},  {0, "z", 0},   {1, "0", 0},   {1, "9", 0},
               {13, "<a", 1}, {0, "</", 10}, {2, " ", 3},   {4, " ", 3},   {4, "x", 3},
               {5, " ", 0},   {2, ">", 5},   {4, "/", 6},   {3, "x", 7},   {13, "x", 7},
               {5, "<a", 8},  {7, "<a", 0},  {7, "</", 10}, {10, "x", 11}, {11, ">", 12},
               {5, "\n", 13}, {5, "\r", 14}, {12, ">", 0}};
  for (const auto& c : cases) {
    EXPECT_EQ(c.expected, GetTokenType(c.last, c.text[0], c.text[1])) << c.last << c.text;
  }
}

TEST(KEXmlReader, RefusesEmptyAndExhaustedInput) {
  KEXmlReader empty, full = ReaderOf("<a>");
  KEString a, b;
  full.MoveTo(100, 2);
  EXPECT_EQ(3u, full.Pos());
  for (const Movement move : kMovements) {
    EXPECT_EQ("Cannot use empty input XML", FailureOf([&] { move(empty, "a", a, b); }));
    EXPECT_EQ("Cannot read beyond length of input XML", FailureOf([&] { move(full, "a", a, b); }));
  }
  KEString text("<a>");
  EXPECT_EQ("Cannot search beyond end of input XML",
            FailureOf([&] { ThrowExceptionOnLimits(text, 3, KEString::NPos); }));
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

// An attribute whose name begins with one of the letters that do not count ends the attributes, and
// neither the element's own value nor the next one's is mistaken for the other's.
TEST(KEXmlReader, LeavesUnrecognisedAttributesAlone) {
  for (const char* text : {"<o type=\"T\" a=\"1\">v</o>", "<o type=\"T\" zz='>'>v</o>"}) {
    KEXmlReader reader = ReaderOf(text);
    KEString name, value;
    reader.GetElementAttributeNameAndValue("o", name, value);
    EXPECT_STREQ("T", value.Cstr());
    reader.GetElementValue("o", value);
    EXPECT_STREQ("v", value.Cstr());
  }
  KEXmlReader reader = ReaderOf("<o a=\"1\"/><p>next</p>");
  KEString name, value;
  ASSERT_TRUE(reader.FindElementTag("o"));
  for (int i = 0; i < 4; ++i) reader.GetAttributeNameAndValue(name, value);
  EXPECT_TRUE(name.Empty());
  reader.GetElementValue("o", value);
  EXPECT_TRUE(value.Empty());
  EXPECT_TRUE(reader.IsElementTag("p"));
}

TEST(KEXmlReader, TakesValues) {
  const struct {
    const char *text, *value;
  } cases[] = {{"<v/>", ""},
               {"<v k=\"a/\" />", ""},
               {"<v></v>", ""},
               {"<v>\r\n </v>", ""},
               {"<v>\n  a b \n</v>", "a b \n"},
               {"<v k='>'>/a&lt;</v>", "/a&lt;"},
               {"<v>\n<![CDATA[<b>]] &amp; ]]>\r\n</v>", "<b>]] &amp; "},
               {"<v><![CDATA[]]></v>", ""},
               {"<v><b>1</b></v>", ""},
               {"<v><![CDATA[cut</v> rest", "cut</"},
               {"<vlong>1</vlong>", "1"},
               {"<w>v</w><v>1</v>", "not found"}};
  for (const auto& c : cases) EXPECT_EQ(c.value, ValueOf(c.text, "v")) << c.text;
  EXPECT_EQ("1", ValueOf("<v>1</v>", "v", true)) << "the last element of a text can be read";
}

void ReadAttributeAndValue(const char* text) {
  KEXmlReader reader = ReaderOf(text);
  KEString name, value;
  reader.GetElementAttributeNameAndValue("v", name, value);
  reader.GetElementValue("v", value);
}

TEST(KEXmlReader, NamesWhatIsMalformed) {
  for (const char* text :
       {"<v>12", "<v k=\"1>1</v>", "<v k>1</v>", "<v k=1>1</v>", "<v /x>", "<v  k"}) {
    EXPECT_EQ(ERR_BAD_ELEM, FailureOf([&] { ReadAttributeAndValue(text); })) << text;
  }
  EXPECT_EQ(ERR_BAD_CDATA, FailureOf([] { ValueOf("<v><![CDATA[cut</v>", "v", true); }));
  EXPECT_EQ(ERR_BAD_ELEM, FailureOf([] { ValueOf("<v><![CDATA[cut", "v"); }));
  EXPECT_EQ(ERR_BAD_ELEM, FailureOf([] { ValueOf("<v>1</w>", "v", true); }));
  KEString name;
  EXPECT_EQ(ERR_BAD_ELEM, FailureOf([&] { ReaderOf("<abc").GetElementTag(name); }));
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
  EXPECT_EQ(ERR_BAD_ELEM, FailureOf([&] { crossed.GetElementContent("a", content); }));
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
  EXPECT_EQ(ERR_BAD_ELEM, FailureOf([&] { reader.SkipTillChar('#'); }));
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
