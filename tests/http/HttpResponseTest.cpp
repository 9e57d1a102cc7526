// SPDX-License-Identifier: MIT
#include "http/HttpResponse.h"

#include <gtest/gtest.h>

#include <string>

#include "http/HttpException.h"
#include "http/HttpReceiver.h"
#include "http/HttpRequest.h"

namespace KELib::Http {
namespace {

std::string Content(HttpResponse& response, unsigned int length) {
  return std::string(response.GetContent().Cstr(), length);
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

TEST(HttpReceiverTest, AppendsExactlyTheBytesGivenAndTakesAnAnnouncedRoomAtOnce) {
  HttpResponse response;
  response.AddContent("at first", 8);
  HttpReceiver receiver(response);
  std::string expected = "at first";
  const char* block = nullptr;
  const std::string chunk = '\0' + std::string(3000, 'x');
  for (unsigned int length = 0; length < 3000; length += 7) {
    if (length == 2002) {
      receiver.Expect(1000000);
      block = response.GetContent().Cstr();
    }
    receiver.Add(chunk.data(), length);
    expected.append(chunk, 0, length);
  }
  EXPECT_EQ(expected, Content(response, receiver.Length()));
  EXPECT_EQ(block, response.GetContent().Cstr()) << "the room was not taken at once";
}

TEST(HttpReceiverTest, IsBounded) {
  HttpResponse response;
  HttpReceiver receiver(response, 10000);
  receiver.Add(std::string(9999, 'a').data(), 9999);
  EXPECT_THROW(receiver.Add("bc", 2), HttpException);
  EXPECT_THROW(receiver.Expect(2), HttpException);
  EXPECT_THROW(receiver.Expect(0xffffffffffffffffULL), HttpException);
  receiver.Add("b", 1);
  EXPECT_EQ(std::string(9999, 'a') + "b", Content(response, receiver.Length()));
}

TEST(HttpResponseTest, AppendsToWhateverTextItHolds) {
  HttpResponse response;
  EXPECT_FALSE(response.IsRequestError());
  char text[] = "abcdef";
  EXPECT_EQ(0u, WriteResponse(text, 0, 6, &response));
  EXPECT_EQ(6u, WriteResponse(text, 2, 3, &response));
  EXPECT_ANY_THROW(WriteResponse(text, 0xffffffffU, 0xffffffffU, &response));
  KEString taken;
  taken.Transfer(response.GetContent());
  EXPECT_STREQ("abcdef", taken.Cstr());
  response.AddContent("new", 3);
  EXPECT_STREQ("new", response.GetContent().Cstr());
  response.GetContent() = "foreign";
  response.AddContent("!", 1);
  EXPECT_STREQ("foreign!", response.GetContent().Cstr());
}

}  // namespace
}  // namespace KELib::Http
