// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <string>

#include "foundation/KEException.h"
#include "http/ConnectionInfo.h"
#include "http/HeaderInfoImpl.h"

namespace {

using KELib::Http::HeaderInfoImpl;

std::string Lines(HeaderInfoImpl& headers) {
  std::string lines;
  for (auto line = headers.GetHeaderIterator(); !line.End(); line++) {
    lines += std::string(*line) + "|";
  }
  return lines;
}

TEST(HeaderInfoTest, KeepsLinesInOrderAsTheyWereGiven) {
  HeaderInfoImpl headers;
  EXPECT_FALSE(headers.HasHeaders());
  headers.AddHeader("A: ", "1");
  headers.AddHeader("B: ", "");
  headers.AddHeader("A: ", "2");
  EXPECT_EQ("A: 1|B: |A: 2|", Lines(headers));
  EXPECT_STREQ("A: 1", headers.GetHeader("A: "));
  EXPECT_EQ(nullptr, headers.GetHeader("C: "));
  headers.RemoveHeader("A: ");
  headers.RemoveHeader("C: ");
  EXPECT_EQ("B: |A: 2|", Lines(headers));
  headers.RemoveHeader("A: ");
  headers.RemoveHeader("B: ");
  EXPECT_FALSE(headers.HasHeaders());
}

TEST(HeaderInfoTest, AnIteratorStopsAtTheEnd) {
  HeaderInfoImpl headers;
  headers.AddHeader("A: ", "1");
  auto line = headers.GetHeaderIterator();
  EXPECT_STREQ("A: 1", *line++);
  EXPECT_TRUE(line.End());
  EXPECT_EQ(nullptr, *++line);
}

TEST(HeaderInfoTest, RefusesNullAndNamesTheKey) {
  KELib::Http::ConnectionInfo info(nullptr, "http://h", true);
  EXPECT_EQ(nullptr, info.GetHeaderInfo());
  EXPECT_EQ(nullptr, info.GetHeader("A"));
  std::string texts;
  for (const char* key : {static_cast<const char*>(nullptr), "A: "}) {
    try {
      info.AddHeader(key, nullptr);
    } catch (const KELib::InvalidArgumentException& e) {
      texts += e.What();
    }
  }
  EXPECT_EQ("Header Key missingHeader value missing for Key: A: \n", texts);
  EXPECT_FALSE(info.HasHeaders());
}

}  // namespace
