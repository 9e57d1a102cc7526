// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "http/ConnectionInfo.h"
#include "http/HeaderInfoImpl.h"
#include "support/Thrown.h"

namespace KELib::Http {
namespace {

std::string Lines(HeaderInfoImpl& headers) {
  std::string lines;
  for (auto line = headers.GetHeaderIterator(); !line.End(); line++) {
    lines += std::string(*line) + "|";
  }
  return lines;
}

TEST(HeaderInfoTest, KeepsLinesInOrderAsTheyWereGiven) {
  HeaderInfoImpl headers;
  headers.AddHeader("A: ", "1");
  headers.AddHeader("B: ", "");
  headers.AddHeader("A: ", "2");
  EXPECT_EQ("A: 1|B: |A: 2|", Lines(headers));
  EXPECT_STREQ("A: 1", headers.GetHeader("A: "));
  EXPECT_EQ(nullptr, headers.GetHeader("C: "));
  for (const char* key : {"A: ", "C: ", "B: "}) headers.RemoveHeader(key);
  EXPECT_EQ("A: 2|", Lines(headers));
  auto line = headers.GetHeaderIterator();
  EXPECT_STREQ("A: 2", *line++);
  EXPECT_EQ(nullptr, *++line) << "behind the end";
  headers.RemoveHeader("A: ");
  EXPECT_FALSE(headers.HasHeaders());
}

TEST(HeaderInfoTest, RefusesNullAndNamesTheKey) {
  ConnectionInfo info(nullptr, "http://h", true);
  EXPECT_EQ(nullptr, info.GetHeaderInfo());
  EXPECT_EQ(nullptr, info.GetHeader("A"));
  EXPECT_EQ("InvalidArgumentException: Header Key missing",
            Thrown([&] { info.AddHeader(nullptr, nullptr); }));
  EXPECT_EQ("InvalidArgumentException: Header value missing for Key: A: \n",
            Thrown([&] { info.AddHeader("A: ", nullptr); }));
  EXPECT_FALSE(info.HasHeaders());
}

}  // namespace
}  // namespace KELib::Http
