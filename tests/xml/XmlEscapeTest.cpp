// SPDX-License-Identifier: MIT
#include "xml/XmlEscape.h"

#include "support/Answers.h"
#include "xml/XmlException.h"

namespace KELib::Xml {
namespace {

template <typename Text = KEStringBuffer>
std::string Converted(void (*convert)(const char*, Text&), const char* text) {
  Text out;
  out = "stale";
  convert(text, out);
  return out.Cstr();
}

TEST(XmlEscape, AnswersTheCases) {
  ExpectAnswers(
      KECPP_TEST_DATA "/cases/escapes.txt",
      {{"escape", [](const Row& row) { return Converted<>(EscapeText, row[1].c_str()); }},
       {"escape stray", [](const Row& row) { return Converted<>(EscapeStray, row[1].c_str()); }},
       {"decode", [](const Row& row) { return Converted<>(DecodeEntities, row[1].c_str()); }}});
  EXPECT_EQ("&lt;<",
            Converted<KEString>(EscapeText, "<") + Converted<KEString>(DecodeEntities, "&lt;"));
  EXPECT_EQ("", Converted<>(EscapeText, nullptr) + Converted<>(DecodeEntities, nullptr));
}

TEST(XmlException, JoinsAndCopiesItsTexts) {
  EXPECT_EQ("XmlException: ab", Thrown([] {
              KEString gone("a");
              ThrowXmlException(gone, "b");
            }));
}

}  // namespace
}  // namespace KELib::Xml
