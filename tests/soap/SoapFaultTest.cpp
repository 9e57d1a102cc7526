// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <exception>
#include <memory>
#include <string>

#include "soap/SoapException.h"
#include "soap/SoapFaultInfo.h"
#include "soap/SoapMessage.h"
#include "soap/SoapResponse.h"

namespace KELib::Soap {
namespace {

SoapResponse Fault(const char* xml) {
  KEString ns, name("soapenv:Fault"), content(xml);
  return SoapResponse(ns, name, content);
}

SoapException Thrown(const char* xml) {
  SoapResponse response = Fault(xml);
  try {
    ThrowExceptionIfFault(response);
  } catch (const SoapException& e) {
    return e;
  }
  ADD_FAILURE() << "nothing was thrown for " << xml;
  return SoapException();
}

TEST(SoapFault, BecomesAnExceptionThatNamesTheType) {
  const SoapException e = Thrown(
      "<faultcode>ServerFaultCode</faultcode>\r\n<faultstring>No <![CDATA[<detail>]]></faultstring>"
      "<faultactor>detail</faultactor>"
      "<detail><NotAuthenticatedFault xsi:type=\"N\"><detail>x</detail></NotAuthenticatedFault>"
      "</detail>");
  EXPECT_STREQ("NotAuthenticated", e.What());
  ASSERT_NE(nullptr, e.faultInfo);
  EXPECT_STREQ("ServerFaultCode", e.faultInfo->faultCode);
  EXPECT_STREQ("No <detail>", e.faultInfo->faultString);
  EXPECT_STREQ("NotAuthenticated", e.faultInfo->detail->faultTypeName);
  EXPECT_STREQ(
      "<NotAuthenticatedFault xsi:type=\"N\"><detail>x</detail></NotAuthenticatedFault>",
      e.faultInfo->detail->detailXml);
}

TEST(SoapFault, ReadsOtherOrdersAndShapes) {
  const struct {
    const char *xml, *type, *code, *text;
  } cases[] = {
      {"<detail><AFault/></detail><faultstring>t</faultstring><faultcode>c</faultcode>", "A", "c",
       "t"},
      {"<detail><Odd a=\"1\">x</Odd></detail>", "Odd", "", ""},
      {"<detail><AFaultFault/></detail>", "A", "", ""},
      {"<faultstring>t</faultstring>", "", "", "t"},
      {"<faultcode/><faultstring></faultstring><detail/>", "", "", ""},
      {"<faultcode>c</faultcode><detail>only text</detail>", "", "c", ""},
      {"no element", "", "", ""},
  };
  for (const auto& c : cases) {
    const SoapException e = Thrown(c.xml);
    EXPECT_STREQ(c.type, e.What()) << c.xml;
    EXPECT_STREQ(c.code, e.GetFaultInfo()->GetFaultCode()) << c.xml;
    EXPECT_STREQ(c.text, e.GetFaultInfo()->GetFaultString()) << c.xml;
  }
}

TEST(SoapFault, EmptyAndBrokenFaultsAreReported) {
  const SoapException empty = Thrown("");
  EXPECT_STREQ("Server Fault had no content.", empty.What());
  EXPECT_EQ(nullptr, empty.GetFaultInfo());
  for (const char* xml : {"<detail><A>", "<faultcode>c", "<faultcode>c</other>", "<"}) {
    EXPECT_STREQ("Malformed XML. Missing element end.", Thrown(xml).What()) << xml;
  }
  SoapResponse broken = Fault("<faultcode>c</faultcode><detail>");
  SoapFaultInfo* info = nullptr;
  EXPECT_THROW(ExtractFaultInfo(broken, info), SoapException);
  const std::unique_ptr<SoapFaultInfo> owned(info);
  ASSERT_NE(nullptr, owned);
  EXPECT_STREQ("c", owned->faultCode);
}

TEST(SoapFault, OtherRepliesPass) {
  KEString ns, name("Fault"), content("<faultcode>c</faultcode>");
  SoapResponse response(ns, name, content);
  EXPECT_NO_THROW(ThrowExceptionIfFault(response));
  EXPECT_STREQ("<faultcode>c</faultcode>", response.content.Cstr());
}

TEST(SoapFault, CopiesOutliveTheirSource) {
  KEString code("c"), text("text"), xml("<x/>"), name("X");
  auto* info = new SoapFaultInfo(code, text, new SoapFaultDetail(xml));
  info->detail->SetFaultTypeName(name);
  EXPECT_TRUE(code.Empty() && text.Empty() && xml.Empty() && name.Empty());
  auto source = std::make_unique<SoapException>("lost");
  source->SetFaultInfo(nullptr);
  EXPECT_STREQ("lost", source->What());
  source->SetFaultInfo(info);

  const std::exception_ptr held = std::make_exception_ptr(*source);
  SoapException assigned("older");
  assigned = *source;
  source.reset();
  EXPECT_STREQ("text", assigned.What());
  EXPECT_STREQ("<x/>", assigned.faultInfo->detail->detailXml);
  try {
    std::rethrow_exception(held);
  } catch (const Exception& e) {
    EXPECT_STREQ("text", e.What());
  }
}

}  // namespace
}  // namespace KELib::Soap
