// SPDX-License-Identifier: MIT
#include <exception>
#include <memory>

#include "soap/SoapException.h"
#include "soap/SoapFaultInfo.h"
#include "soap/SoapMessage.h"
#include "soap/SoapResponse.h"
#include "support/Answers.h"

namespace KELib::Soap {
namespace {

SoapException ThrownFor(const char* xml, const char* tag = "soapenv:Fault") {
  KEString ns, name(tag), content(xml);
  SoapResponse response(ns, name, content);
  try {
    ThrowExceptionIfFault(response);
  } catch (const SoapException& e) {
    return e;
  }
  return SoapException("nothing was thrown");
}

std::string FaultOf(const Row& row) {
  const SoapException e = ThrownFor(row[1].c_str());
  const SoapFaultInfo* const info = e.GetFaultInfo();
  std::string all = e.What();
  if (info == nullptr) return all;
  for (const char* text : {info->GetFaultCode(), info->GetFaultString()}) {
    all += std::string(", ") + text;
  }
  return all.substr(0, all.find_last_not_of(' ') + 1);
}

TEST(SoapFault, AnswersTheCases) {
  ExpectAnswers(KECPP_TEST_DATA "/cases/faults.txt", {{"fault", FaultOf}});
  EXPECT_STREQ("nothing was thrown", ThrownFor("<faultcode>c</faultcode>", "Fault").What());
}

TEST(SoapFault, KeepsItsTypeAndItsDetail) {
  const char* const detail = "<NoRightFault xsi:type=\"N\"><detail>x</detail></NoRightFault>";
  const SoapException e = ThrownFor(("<detail>" + std::string(detail) + "</detail>").c_str());
  EXPECT_STREQ("NoRight", e.faultInfo->detail->faultTypeName);
  EXPECT_STREQ(detail, e.faultInfo->detail->detailXml);
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
  EXPECT_EQ("SoapException: text", Thrown([&] { std::rethrow_exception(held); }));

  KEString ns, name("soapenv:Fault"), content("<faultcode>d</faultcode><detail><y/></detail>");
  SoapResponse response(ns, name, content);
  SoapFaultInfo* read = nullptr;
  ExtractFaultInfo(response, read);
  *assigned.faultInfo = *std::unique_ptr<SoapFaultInfo>(read);
  EXPECT_STREQ("d", assigned.faultInfo->faultCode);
  SoapFaultDetail detail(xml);
  detail = *assigned.faultInfo->detail;
  assigned.faultInfo->SetSoapFaultDetail(nullptr);
  EXPECT_STREQ("<y/>", detail.detailXml);
}

}  // namespace
}  // namespace KELib::Soap
