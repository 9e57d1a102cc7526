// SPDX-License-Identifier: MIT
//
// What a server wrote before is recognised: a fault in that slows the walk over update sets, and no
// cache shows it.
#include <map>

#include "datasync/LearnedSteps.h"
#include "datasync/LearnedText.h"
#include "datasync/LookAhead.h"
#include "datasync/PropertyTable.h"
#include "foundation/KEMutexGuard.h"
#include "instance/KEDataCache.h"
#include "stub/base/MRawStub.h"
#include "support/Answers.h"
#include "xml/KEXmlReader.h"

namespace KE::Service {
namespace {

using KELib::Xml::KEXmlCursor;
using KELib::Xml::XmlSlice;

std::string Copy(const XmlSlice& slice) {
  return std::string(slice.text, slice.length);
}

std::string LineEnds(const std::string& count) {
  return std::string(std::stoul(count), '\n');
}

// Reads `markup` with what is known, and teaches it.
template <typename Known, typename Read>
std::string Meet(Known& known, const std::string& markup, Read read) {
  KELib::KEString text(markup.c_str());
  KELib::Xml::KEXmlReader reader(text, false, 0);
  KEXmlCursor cursor(reader);
  const std::string answer = read(known, cursor);
  EXPECT_TRUE(cursor.AtEnd()) << markup;
  return answer;
}

std::string ReadStep(LearnedSteps& known, KEXmlCursor& cursor) {
  static std::map<std::string, Property> properties;
  const char* const begin = cursor.Position();
  const Property* property = nullptr;
  XmlSlice path, op, value;
  if (known.Take(cursor, property, value)) return std::string(property->path) + "=" + Copy(value);
  EXPECT_EQ(begin, cursor.Position());
  EXPECT_TRUE(cursor.PassTag("<changeSet>") && cursor.TakeText("<name", "</name>", path));
  cursor.TakeText("<op", "</op>", op);
  EXPECT_TRUE(cursor.TakeText("<val", "</val>", value) && cursor.PassTag("</changeSet>"));
  const auto at = properties.try_emplace(Copy(path)).first;
  at->second.path = at->first;
  known.Learn(begin, path, value, &at->second);
  return "read";
}

std::string MeetStep(LearnedSteps& known, const std::string& step) {
  const Row words = Split(step, " ");
  const std::string behind = words[2] == "-" ? "" : LineEnds(words[2]) + "<op>assign</op>";
  return Meet(known,
              "<changeSet>" + LineEnds(words[0]) + "<name>" + words[1] + "</name>" + behind +
                  "<val>" + words[3] + "</val></changeSet>",
              ReadStep);
}

std::string ReadText(LearnedText& known, KEXmlCursor& cursor) {
  const char* const begin = cursor.Position();
  XmlSlice value;
  const auto take = [&](const char* text, std::size_t length) {
    return cursor.TakeTextBehind(text, length, "</id>", value);
  };
  if (known.Recognise(take)) return Copy(value);
  EXPECT_TRUE(cursor.PassTag("<a>") && cursor.TakeText("<id", "</id>", value));
  if (!known.Learn(begin, value)) return "read";
  const XmlSlice kept = known.Part(begin, {begin + 1, 1});
  EXPECT_EQ("a", Copy(kept));
  EXPECT_NE(begin + 1, kept.text);
  return "learned";
}

template <typename Known, typename Step>
std::function<std::string(const Row&)> Through(Step meet) {
  return [=](const Row& row) {
    Known known{};
    return Stepwise(row[1], [&](const std::string& step) { return meet(known, step); });
  };
}

TEST(Learning, AnswersTheCases) {
  ExpectAnswers(KECPP_TEST_DATA "/learning.txt",
                {{"steps", Through<LearnedSteps>(MeetStep)},
                 {"text", Through<LearnedText>([](LearnedText& known, const std::string& step) {
                    const Row words = Split(step, " ");
                    return Meet(known, "<a>" + LineEnds(words[0]) + "<id>" + words[1] + "</id>",
                                ReadText);
                  })}});
}

// However their places collide.
TEST(Learning, KeepsABoundedNumberOfSteps) {
  LearnedSteps known;
  const auto step = [](int i) { return "0 property-" + std::to_string(100 + i) + " 0 a"; };
  for (int i = 0; i < 70; ++i) EXPECT_EQ("read", MeetStep(known, step(i)));
  for (int i = 0; i < 70; ++i) EXPECT_EQ(i >= 64, MeetStep(known, step(i)) == "read") << i;
}

// Wherever the text ends; an object with another head is not found.
TEST(Learning, FindsTheNextObjectsInALargeCache) {
  KE::Instance::KEDataCache cache;
  const KELib::KEMutexGuard guard(cache.GetMutex());
  LearnedText head;
  const std::string markup = "<kind>modify</kind><obj type=\"VirtualMachine\">";
  head.Learn(markup.data(), markup.data() + markup.size());
  const auto found = [&](const std::string& set) {
    KELib::KEString text(set.c_str());
    KELib::Xml::KEXmlReader reader(text, false, 0);
    return LookAhead().Fetch(KEXmlCursor(reader), head, cache);
  };
  std::string set = "</objectSet><objectSet><kind>leave</kind><obj>4</obj></objectSet>";
  for (const char* id : {"1", "no-such", "3", "2"}) {
    set += "<objectSet>" + markup + id + "</obj></objectSet>";
  }
  EXPECT_EQ(0U, found(set));
  for (int i = 0; i < 2100; ++i) {
    KELib::KEString key(std::to_string(i).c_str());
    cache.SetVal(key, KELib::Stub::CreateRawStub());
  }
  for (std::size_t length = 0, before = 0; length <= set.size(); ++length) {
    const std::size_t now = found(set.substr(0, length));
    EXPECT_TRUE(now == before || now == before + 1) << length;
    before = now;
  }
  EXPECT_EQ(3U, found(set));
}

}  // namespace
}  // namespace KE::Service
