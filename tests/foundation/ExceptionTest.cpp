// SPDX-License-Identifier: MIT
#include "foundation/KEException.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace KELib {
namespace {

TEST(ThrowableTest, BorrowsLiteralsAndCopiesTextsWithALength) {
  static const char kLiteral[] = "fixed";
  const Exception borrowed(kLiteral);
  const Exception shared(borrowed);
  EXPECT_EQ(shared.What(), kLiteral);

  char text[] = "abcdef";
  auto* owned = new Exception(text, 3);
  text[0] = 'X';
  EXPECT_STREQ(owned->What(), "abc");
  const Exception copy(*owned);
  delete owned;
  EXPECT_STREQ(copy.What(), "abc");
  EXPECT_STREQ(Exception().What(), "Unknown Exception");
}

TEST(ThrowableTest, AssignmentLetsTheOldTextGo) {
  char text[] = "a longer text of its own";
  Exception target(text, 0);
  target = Exception("literal");  // must neither leak the old text nor free the literal later
  EXPECT_STREQ(target.What(), "literal");
  target.Init("own text again", 0);
  target = *&target;
  target.Init(target.What() + 4, 0);  // a part of its own text
  EXPECT_STREQ(target.What(), "text again");
  target.Init("ab", 10);  // padded, not read beyond its end
  EXPECT_STREQ(target.What(), "ab");
}

TEST(ThrowableTest, ALostLoginIsAKindOfMissingPermission) {
  EXPECT_THROW(throw NotAuthenticatedException("x"), NoPermissionException);
  EXPECT_THROW(throw KE::InvalidPowerStateException("x"), Exception);
  EXPECT_FALSE((std::is_base_of_v<RequestTimedOutException, RequestFailedException>));
}

}  // namespace
}  // namespace KELib
