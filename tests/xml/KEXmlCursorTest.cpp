// SPDX-License-Identifier: MIT
#include "xml/KEXmlCursor.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "xml/KEXmlReader.h"
#include "xml/XmlConstants.h"
#include "xml/XmlException.h"

namespace KELib::Xml {
namespace {

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
  try {
    const std::string all = Outline(cursor);
    return cursor.AtEnd() ? all : all + " and an end tag";
  } catch (const XmlException& e) {
    EXPECT_STREQ(ERR_BAD_ELEM, e.What());
    return "malformed";
  }
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

TEST(KEXmlCursor, WalksElementsAttributesAndMarkup) {
  const struct {
    const char *text, *outline;
  } cases[] = {{"<?xml version='1.0'?>\r\n<!DOCTYPE a>\n<a/>", "a"},
               {"<a x = 'p\"q>'\t\n y=\"\"/><a.long ><b/>text<c>1</c\n></a.long>",
                "a(x=p\"q>)(y=)a.long[bc[]]"},
               {"<a><!-- <b> </a> --><![CDATA[</a><b>]]><?p </a> ?><c></c></a>", "a[c[]]"},
               {"<a><!--> <b> --><!---> <b> --><c/></a>", "a[c]"},
               {"<a></a></b><c/>", "a[] and an end tag"},
               {"no element at all", ""},
               {"", ""}};
  for (const auto& c : cases) EXPECT_EQ(c.outline, OutlineOf(c.text)) << c.text;
}

TEST(KEXmlCursor, RefusesWhatIsCutOrCrossed) {
  for (const char* text : {"<a", "<a b", "<a b=", "<a b='>", "<a b=c/>", "<a><b></a></b>",
                           "<a></ab>", "<ab></a>", "<a>", "<a></a", "<a><", "<a><!-- >",
                           "<a><![CDATA[ ></a>", "<a><? ></a>", "<>", "<a></>"}) {
    EXPECT_EQ("malformed", OutlineOf(text)) << text;
  }
}

TEST(KEXmlCursor, JoinsTheTextOfOneElement) {
  const struct {
    const char *text, *value;
  } cases[] = {{"<v/>", ""},
               {"<v>\r\n\t a &lt; b \n</v>", "a &lt; b \n"},
               {"<v>\n<!-- c -->\n<![CDATA[ <b>]]></v>", " <b>"},
               {"<v>1<!---->2<![CDATA[3]]><![CDATA[]]>4<b>no<v>no</v></b>5</v>", "12345"},
               {"<v k='>'>/</v ><w/>", "/ and more"}};
  for (const auto& c : cases) EXPECT_EQ(c.value, TextOf(c.text)) << c.text;
}

// A short cut takes what the general operations would have taken, or nothing.
TEST(KEXmlCursor, ShortCutsAgreeWithTheLongWay) {
  const struct {
    const char* text;
    bool taken;
  } cases[] = {{" \n<v>\r\n 1 &lt; 2 </v><w/>", true},
               {"<v></v>", true},
               {"<v a='>' b=\"'/\">1</v>", true},
               {"<v a = ''\n>1</v>", true},
               {"<v a='x'>1</v>", true},
               {"<v a='x' />", false},
               {"<v/>", false},
               {"<va>1</va>", false},
               {"<v>1</va>", false},
               {"<v>1</v >", false},
               {"<v>1<!-- --></v>", false},
               {"<v><u/>1</v>", false},
               {"text<v>1</v>", false},
               {"<v a='x>1</v>", false},
               {"<v a", false},
               {"<v>1", false},
               {"<", false},
               {"", false}};
  for (const auto& c : cases) {
    KEXmlReader reader = ReaderOf(c.text);
    KEXmlCursor quick(reader), general(reader);
    XmlSlice taken, name;
    EXPECT_EQ(c.taken, quick.TakeText("<v", "</v>", taken)) << c.text;
    if (c.taken) {
      KEStringBuffer joined;
      ASSERT_TRUE(general.NextChild(name));
      EXPECT_EQ(Copy(general.Text(name, joined)), Copy(taken)) << c.text;
    }
    EXPECT_EQ(general.Position(), quick.Position()) << c.text;
  }
  KEXmlReader reader = ReaderOf("<s><v a='1>'>x</v><v a='2' b=''>y</v></s>");
  KEXmlCursor cursor(reader);
  XmlSlice attribute, text;
  EXPECT_FALSE(cursor.PassTag("<v>"));
  EXPECT_TRUE(cursor.PassTag("<s>"));
  EXPECT_TRUE(cursor.TakeText("<v a='", "</v>", attribute, text));
  EXPECT_EQ("1> x", Copy(attribute) + " " + Copy(text));
  EXPECT_FALSE(cursor.TakeText("<v a='", "</v>", attribute, text));
}

TEST(KEXmlCursor, LooksAheadForChildElements) {
  const std::pair<const char*, bool> cases[] = {{"<a k='/'> <b/></a>", true},
                                                {"<a>\n<!-- c --><?p?><b></b></a>", true},
                                                {"<a><![CDATA[<b/>]]></a>", false},
                                                {"<a> text<b/></a>", false},
                                                {"<a></a><b/>", false},
                                                {"<a/><b/>", false},
                                                {"<a> ", false}};
  for (const auto& [text, expected] : cases) {
    KEXmlReader reader = ReaderOf(text);
    KEXmlCursor cursor(reader);
    XmlSlice name;
    ASSERT_TRUE(cursor.NextChild(name));
    const char* const before = cursor.Position();
    EXPECT_EQ(expected, cursor.HasChildElements()) << text;
    EXPECT_EQ(before, cursor.Position());
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
    const std::string cut = document.substr(0, size), outline = OutlineOf(cut);
    // The prolog may be whole or not begun; nothing behind it can be taken for a whole document.
    EXPECT_TRUE(outline == "malformed" || (size <= 21 && outline.empty())) << cut;
    EXPECT_THROW(TextOf(cut + "<"), XmlException) << cut;
  }
}

// The stack would not carry a call for each level. Fewer pieces than levels: a sanitizer looks at
// all of the text that is left for each of them.
TEST(KEXmlCursor, BearsManyLevelsAndPieces) {
  constexpr int kLevels = 1000000, kPieces = 50000;
  std::string deep, pieces;
  for (int i = 0; i < kLevels; ++i) deep += "<a>";
  EXPECT_THROW(TextOf(deep), XmlException);
  for (int i = 0; i < kLevels; ++i) deep += "</a>";
  EXPECT_EQ("", TextOf(deep));
  for (int i = 0; i < kPieces; ++i) pieces += "<!---->1<![CDATA[2]]>";
  EXPECT_EQ(2u * kPieces, TextOf("<v>" + pieces + "</v>").size());
}

}  // namespace
}  // namespace KELib::Xml
