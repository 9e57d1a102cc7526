// SPDX-License-Identifier: MIT
#include "http/HttpResponse.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "http/HttpException.h"
#include "http/HttpRequest.h"

namespace {

using KELib::KEString;
using KELib::Http::HttpException;
using KELib::Http::HttpRequest;
using KELib::Http::HttpResponse;

std::string Content(HttpResponse& response) {
  return std::string(response.GetContent().Cstr(), response.GetContentLength());
}

TEST(HttpRequestTest, TakesContentOverAndKnowsItsLength) {
  KEString first("abc");
  HttpRequest request(first);
  EXPECT_EQ(3u, request.GetContentLength());
  EXPECT_EQ(-1, request.GetTimeout());
  KEString second("longer");
  request.SetContent(second);
  EXPECT_TRUE(second.Empty());
  EXPECT_EQ(6u, request.GetContentLength());
  EXPECT_EQ(0u, request.GetChunk(5, &first));
}

TEST(HttpResponseTest, AppendsExactlyTheBytesGiven) {
  HttpResponse response;
  EXPECT_FALSE(response.IsRequestError());
  std::string expected;
  const std::string chunk(3000, 'x');
  for (unsigned int length = 0; length < 3000; length += 7) {
    EXPECT_EQ(length,
              KELib::Http::WriteResponse(const_cast<char*>(chunk.data()), 1, length, &response));
    expected.append(chunk, 0, length);
  }
  response.AddContent("\0y", 2);
  expected.append("\0y", 2);
  EXPECT_EQ(expected, Content(response));
}

TEST(HttpResponseTest, StartsAgainAfterItsContentWasTakenOver) {
  HttpResponse response;
  response.AddContent("\0bc", 3);
  response.AddContent("d", 1);
  EXPECT_EQ(0, std::memcmp("\0bcd", response.GetContent().Cstr(), 5));
  KEString taken;
  taken.Transfer(response.GetContent());
  EXPECT_EQ(0u, response.GetContentLength());
  response.AddContent("new", 3);
  EXPECT_EQ("new", Content(response));
  response.GetContent() = "foreign";
  response.AddContent("!", 1);
  EXPECT_EQ("foreign!", Content(response));
}

TEST(HttpResponseTest, TakesAnAnnouncedRoomAtOnce) {
  HttpResponse response;
  response.AddContent("a", 1);
  response.ExpectContent(100000);
  const char* block = response.GetContent().Cstr();
  for (int i = 0; i < 1000; ++i) response.AddContent(std::string(100, 'b').data(), 100);
  EXPECT_EQ(block, response.GetContent().Cstr());
  EXPECT_EQ(100001u, response.GetContentLength());
}

TEST(HttpResponseTest, IsBounded) {
  HttpResponse response;
  response.SetSizeLimit(10000);
  response.AddContent(std::string(9999, 'a').data(), 9999);
  EXPECT_THROW(response.AddContent("bc", 2), HttpException);
  EXPECT_THROW(response.ExpectContent(2), HttpException);
  EXPECT_THROW(response.ExpectContent(0xffffffffffffffffULL), HttpException);
  char byte = 'd';
  EXPECT_ANY_THROW(KELib::Http::WriteResponse(&byte, 0xffffffffU, 0xffffffffU, &response));
  response.AddContent("b", 1);
  EXPECT_EQ(std::string(9999, 'a') + "b", Content(response));
  response.SetSizeLimit(0xffffffffU);
  EXPECT_GT(0x80000000U, response.GetSizeLimit());
}

}  // namespace
