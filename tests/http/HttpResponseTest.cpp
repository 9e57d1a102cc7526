// SPDX-License-Identifier: MIT
#include "http/HttpResponse.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <utility>

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

  // In the note behind the room only the length was overwritten, by that of an older text.
  char* const block = response.GetContent().Str();
  std::memcpy(block + 9, "older", 6);
  block[4096 + 1 + sizeof(void*)] = 14;
  response.AddContent("!", 1);
  EXPECT_STREQ("foreign!!", response.GetContent().Cstr());
}

TEST(HttpResponseTest, AppendsManyPiecesWithoutCopyingTheWhole) {
  std::string expected;
  for (const char* const first : {"", "taken at once, then more"}) {
    HttpResponse response;
    HttpReceiver(response).Add(first, static_cast<unsigned int>(std::strlen(first)));
    expected = first;
    unsigned int moves = 0;
    const char* block = nullptr;
    for (int i = 0; i < 30000; ++i) {
      const std::string piece = std::to_string(i);
      response.AddContent(piece.data(), static_cast<unsigned int>(piece.size()));
      expected += piece;
      moves += std::exchange(block, response.GetContent().Cstr()) != block;
    }
    EXPECT_EQ(expected, response.GetContent().Cstr());
    EXPECT_LT(moves, 10U) << first;
  }
}

// Texts of other lengths come to stand in the same memory, where a note may have been left.
TEST(HttpResponseTest, IsNotMisledByWhatWasInItsMemoryBefore) {
  std::mt19937 random(3);
  HttpResponse response;
  std::string text;
  const std::string filler(9000, 'x');
  for (int i = 0; i < 20000; ++i) {
    const unsigned int near = (random() % 2 == 0 ? 4096 : 8192) - random() % 40;
    const std::string piece = filler.substr(0, random() % 3 == 0 ? random() % 9 : near);
    if (random() % 2 == 0) {
      { KEString().Transfer(response.GetContent()); }
      if (random() % 2 == 0) response.GetContent() = (text = piece).c_str();
      text = response.GetContent().Cstr();
    } else if (random() % 4 == 0) {
      response.GetContent().Erase(static_cast<unsigned int>(random() % 5000), 9000);
      text = response.GetContent().Cstr();
    }
    response.AddContent(piece.data(), static_cast<unsigned int>(piece.size()));
    text += piece;
    ASSERT_EQ(text, response.GetContent().Cstr()) << i;
  }
}

}  // namespace
}  // namespace KELib::Http
