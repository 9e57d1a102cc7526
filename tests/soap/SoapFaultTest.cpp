// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <exception>
#include <memory>

#include "soap/SoapException.h"
#include "soap/SoapFaultInfo.h"
#include "soap/SoapMessage.h"
#include "soap/SoapResponse.h"

namespace KELib::Soap {
namespace {

SoapException Thrown(const char* xml, const char* tag = "soapenv:Fault") {
  KEString ns, name(tag), content(xml);
  SoapResponse response(ns, name, content);
  try {
    ThrowExceptionIfFault(response);
  } catch (const SoapException& e) {
    return e;
  }
  return SoapException("nothing was thrown");
}

TEST(SoapFault, BecomesAnExceptionThatNamesTheType) {
  const SoapException e = Thrown(
      "<faultcode>ServerFaultCode</faultcode>\r\n<faultstring>No <![CDATA[<detail>]]></faultstring>"
      "<faultactor>detail</faultactor>\r\n<detail><NotAuthenticatedFault xsi:type=\"N\">"
      "<detail>x</detail></NotAuthenticatedFault></detail>");
  EXPECT_STREQ("NotAuthenticated", e.What());
  ASSERT_NE(nullptr, e.faultInfo);
  EXPECT_STREQ("ServerFaultCode", e.faultInfo->faultCode);
  EXPECT_STREQ("No <detail>", e.faultInfo->faultString);
  EXPECT_STREQ("NotAuthenticated", e.faultInfo->detail->faultTypeName);
  EXPECT_STREQ("<NotAuthenticatedFault xsi:type=\"N\"><detail>x</detail></NotAuthenticatedFault>",
               e.faultInfo->detail->detailXml);
}

TEST(SoapFault, ReadsOtherOrdersAndShapes) {
  const struct {
    const char *xml, *type, *code, *text;
  } cases[] = {
      {"<detail><AFault/></detail><faultstring>t</faultstring><faultcode>c</faultcode>", "A", "c",
       "t"},
      {"<detail><Odd a=\"1\">x</Odd></detail>", "Odd", "", ""},
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
  EXPECT_STREQ("Server Fault had no content.", Thrown("").What());
  for (const char* xml : {"<detail><A>", "<faultcode>c", "<faultcode>c</other>", "<"}) {
    EXPECT_STREQ("Malformed XML. Missing element end.", Thrown(xml).What()) << xml;
  }
  EXPECT_STREQ("nothing was thrown", Thrown("<faultcode>c</faultcode>", "Fault").What());
}

TEST(SoapFault, CopiesOutliveTheirSource) {
  KEString code("c"), text("text"), xml("<x/>");
  auto source = std::make_unique<SoapException>("older");
  source->SetFaultInfo(new SoapFaultInfo(code, text, new SoapFaultDetail(xml)));
  EXPECT_TRUE(code.Empty() && text.Empty() && xml.Empty());
  source->SetFaultInfo(nullptr);
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
