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
  const std::pair<std::string, const char*> bad[] = {
      {good + "\n", "tail"},
      {"<!" + good.substr(2), "head"},
      {"<M/>", "short"},
      {Request("<M xmlns=\"urn:pxa25\">"), "well-formed"},
      {Request("<M xmlns=\"urn:other\"/>"), "namespace"},
      {Request("<M xmlns=\"urn:pxa25\"/><N/>"), "more than"}};
  for (const auto& [text, fault] : bad) EXPECT_THAT(FaultOf(text), testing::HasSubstr(fault));
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
