// SPDX-License-Identifier: MIT
#include "simulator/Soap.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace sim {
namespace {

std::string FaultOf(const std::string& request) {
  SoapCall call;
  try {
    ReadCall(request, call);
    return "";
  } catch (const Fault& fault) {
    return fault.text;
  }
}

std::string Request(const std::string& body) {
  std::string request = Envelope(body);
  request.pop_back();  // answers end with a line feed, requests do not
  return request;
}

TEST(Soap, TakesOnlyTheAgreedEnvelope) {
  const std::string good = Request("<M xmlns=\"urn:pxa25\">\n</M>\n");
  EXPECT_EQ(FaultOf(good), "");
  EXPECT_THAT(FaultOf(good + "\n"), testing::HasSubstr("tail"));
  std::string other = good;
  other[1] = '!';
  EXPECT_THAT(FaultOf(other), testing::HasSubstr("head"));
  EXPECT_THAT(FaultOf("<M/>"), testing::HasSubstr("short"));
  EXPECT_THAT(FaultOf(Request("<M xmlns=\"urn:pxa25\">")), testing::HasSubstr("well-formed"));
  EXPECT_THAT(FaultOf(Request("<M xmlns=\"urn:other\"/>")), testing::HasSubstr("namespace"));
  EXPECT_THAT(FaultOf(Request("<M xmlns=\"urn:pxa25\"/><N/>")), testing::HasSubstr("more than"));
}

TEST(Soap, ArgumentsAreCheckedAndDecoded) {
  SoapCall call;
  ReadCall(Request("<M xmlns=\"urn:pxa25\"><_this type=\"T\">1</_this><a>&lt;&amp;</a></M>"), call);
  EXPECT_EQ(call.Argument("a"), "<&");
  EXPECT_NO_THROW(call.CheckElements({"_this", "a"}));
  EXPECT_THROW(call.CheckElements({"a", "_this"}), Fault);
  EXPECT_THROW(call.Argument("b"), Fault);
}

}  // namespace
}  // namespace sim
