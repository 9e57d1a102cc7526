// SPDX-License-Identifier: MIT
#include "xml/KEXmlReader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>

#include "support/Answers.h"
#include "xml/Movements.h"
#include "xml/XmlException.h"

namespace KELib::Xml {
namespace {

const char* const kNothingToRead = "XmlException: Cannot use empty input XML";
const char* const kAtTheEnd = "XmlException: Cannot read beyond length of input XML";

KEXmlReader ReaderOf(const std::string& text, unsigned int start = 0) {
  KEString input(text.c_str());
  return KEXmlReader(input, false, start);
}

// The questions, by name, which move nothing.
const std::map<std::string, std::function<bool(KEXmlReader&, const char*)>> kQuestions = {
    {"is", [](KEXmlReader& r, const char* name) { return r.IsElementTag(name); }},
    {"is-end", [](KEXmlReader& r, const char* name) { return r.IsElementEndTag(name); }},
    {"is-section", [](KEXmlReader& r, const char*) { return r.IsValueCData(); }},
    {"inside", [](KEXmlReader& r, const char*) { return r.InsideElementTag(); }},
    {"complex", [](KEXmlReader& r, const char* name) { return r.HasComplexContent(name); }},
    {"last", [](KEXmlReader& r, const char* type) { return r.State().WasLastType(atoi(type)); }},
    {"end", [](KEXmlReader& r, const char*) { return r.End(); }},
    {"strict", [](KEXmlReader& r, const char*) { return r.SetStrict(true), true; }},
    {"start", [](KEXmlReader& r, const char* pos) { return r.SetStartPos(atoi(pos)), true; }}};

// What a step, "name" or "name argument", comes to.
std::string StepOf(KEXmlReader& reader, const std::string& step) {
  const Row words = Split(step, " ");
  const char* const argument = words.size() > 1 ? words[1].c_str() : "";
  if (words[0] == "rest") return reader.Str() + reader.Pos();
  const auto yesOrNo = [](bool yes) { return yes ? "ok" : "no"; };
  const auto question = kQuestions.find(words[0]);
  if (question != kQuestions.end()) return yesOrNo(question->second(reader, argument));
  const auto* const movement =
      std::find_if(std::begin(kMovements), std::end(kMovements),
                   [&](const Movement& candidate) { return candidate.name == words[0]; });
  if (movement == std::end(kMovements)) return "no such step: " + step;
  KEString first("+"), second("+");
  const bool found = movement->run(reader, argument, first, second);
  if (first.Equals("+")) return yesOrNo(found);
  return first.Cstr() + (second.Equals("+") ? "" : "=" + std::string(second.Cstr()));
}

std::string StepsThrough(const Row& row) {
  KEXmlReader reader = ReaderOf(row[1]);
  return Stepwise(row[2], [&](const std::string& step) { return StepOf(reader, step); });
}

std::string TokenTypeOf(const Row& row) {
  const auto last = static_cast<XmlTokenType>(std::stoi(row[1]));
  return std::to_string(GetTokenType(last, row[2][0], row[2].c_str()[1]));
}

TEST(KEXmlReader, AnswersTheCases) {
  ExpectAnswers(KECPP_TEST_DATA "/cases/reader.txt",
                {{"steps", StepsThrough}, {"token", TokenTypeOf}});
}

TEST(KEXmlReader, RefusesEmptyAndExhaustedInput) {
  KEXmlReader empty, full = ReaderOf("<a>");
  KEString a, b;
  full.MoveTo(100, XmlToken::elementName);
  EXPECT_EQ(3u, full.Pos());
  for (const Movement& move : kMovements) {
    EXPECT_EQ(kNothingToRead, Thrown([&] { move.run(empty, "a", a, b); }));
    EXPECT_EQ(kAtTheEnd, Thrown([&] { move.run(full, "a", a, b); }));
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

TEST(XmlEndTags, AreFoundBackwards) {
  KEString text("<a><b>1</b ></a>x</"), name("old");
  unsigned int pos = KEString::NPos;
  for (const char* none : {"", static_cast<const char*>(nullptr)}) {
    EXPECT_FALSE(BackupToElementEndTag(none, text, pos));
  }
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
