// SPDX-License-Identifier: MIT
#include "soap/SoapMessage.h"

#include <gtest/gtest.h>

#include <string>

#include "http/HttpRequest.h"
#include "http/HttpResponse.h"
#include "soap/SoapException.h"
#include "soap/SoapRequest.h"
#include "soap/SoapResponse.h"
#include "xml/KEXmlBuffer.h"

namespace KELib::Soap {
namespace {

std::string Enveloped(const std::string& body) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<!-- soapenv:Body <a -->\r\n"
         "<soapenv:Envelope xmlns:xsd=\"a>b\" xmlns:soapenv='http://x/'>\r\n"
         "<soapenv:Header><s:id xmlns:s=\"s\">soapenv:Body</s:id><s:none/></soapenv:Header>\r\n"
         "<soapenv:Body id=\"1\">" + body + "</soapenv:Body>\r\n</soapenv:Envelope>\r\n";
}

std::string FailureOf(const std::string& reply) {
  KEString content(reply.c_str());
  SoapResponse response;
  try {
    ExtractMessageContent(content, response);
  } catch (const SoapException& e) {
    EXPECT_EQ(nullptr, e.GetFaultInfo());
    return e.What();
  }
  return "nothing was thrown; content: " + std::string(response.content.Cstr());
}

TEST(SoapMessage, WrapsTheMethodElementToTheByte) {
  Xml::KEXmlBuffer body;
  body.AddElementTagAndValue("Ping", "1");
  SoapRequest request("urn:pxa25", "Ping", body);
  EXPECT_TRUE(body.Empty());
  Http::HttpRequest http;
  EncloseMessageContent(request, http);
  EXPECT_STREQ(
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<soapenv:Envelope xmlns:soapenc=\"http://schemas.xmlsoap.org/soap/encoding/\"\n"
      " xmlns:soapenv=\"http://schemas.xmlsoap.org/soap/envelope/\"\n"
      " xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\"\n"
      " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\">\n"
      "<soapenv:Body>\n<Ping>1</Ping>\n\n</soapenv:Body>\n</soapenv:Envelope>",
      http.GetContent().Cstr());
  EXPECT_EQ(http.GetContent().Length(), http.GetContentLength());
}

TEST(SoapMessage, CutsTheReplyOut) {
  const struct {
    const char *body, *ns, *name, *content;
  } cases[] = {
      {"<LoginResponse xmlns=\"urn:pxa25\"><returnval>a</returnval></LoginResponse>", "urn:pxa25",
       "Login", "<returnval>a</returnval>"},
      {"\r\n <!-- <XResponse> -->\n<LoginResponse\n xmlns = 'urn:pxa25' a=\"b\" >\r\n <r/>\r\n"
       "</LoginResponse\n>\r\n",
       "urn:pxa25", "Login", "\r\n <r/>\r\n"},
      {"<LogoutResponse xmlns=\"urn:pxa25\"/>", "urn:pxa25", "Logout", ""},
      {"<LogoutResponse/>", "", "Logout", ""},
      {"<LogoutResponse>\r\n\t</LogoutResponse>", "", "Logout", ""},
      // What looks like the end is content: a section, a nested element, a longer name.
      {"<AResponse x=\"1\" xmlns=\"u\"><![CDATA[</AResponse>]]><AResponse></AResponse>"
       "</AResponse><AResponseX></AResponseX>",
       "1", "A", "<![CDATA[</AResponse>]]><AResponse></AResponse>"},
      {"<GetResponseNowResponse>1</GetResponseNowResponse>", "", "Get", "1"},
      {"<Ping>&lt;</Ping>", "", "Ping", "&lt;"},
      {"<soapenv:Fault xmlns=\"u\"><faultcode>a</faultcode></soapenv:Fault>", "", "soapenv:Fault",
       "<faultcode>a</faultcode>"},
  };
  for (const auto& c : cases) {
    KEString content(Enveloped(c.body).c_str());
    const char* const buffer = content.Cstr();
    SoapResponse response;
    ExtractMessageContent(content, response);
    EXPECT_STREQ(c.ns, response.ns.Cstr()) << c.body;
    EXPECT_STREQ(c.name, response.name.Cstr()) << c.body;
    EXPECT_STREQ(c.content, response.content.Cstr()) << c.body;
    EXPECT_EQ(buffer, response.content.Cstr()) << "the reply was copied";
    EXPECT_TRUE(content.Empty());
  }
}

TEST(SoapMessage, RefusesWhatIsNoReply) {
  const std::string malformed = "Malformed XML. Missing element end.";
  const std::string noBody = "No Soap Body found in Response";
  EXPECT_EQ("Response Content is empty", FailureOf(""));
  EXPECT_EQ(noBody, FailureOf("<html><p>a < b & \"c</html>"));
  EXPECT_EQ(noBody, FailureOf("<"));
  EXPECT_EQ(noBody, FailureOf("<env:Envelope><env:Body><A/></env:Body></env:Envelope>"));
  EXPECT_EQ(noBody, FailureOf("<e><!-- <soapenv:Body> --></e>"));
  EXPECT_EQ("Response Content is empty", FailureOf(Enveloped("")));
  EXPECT_EQ("Response Content is empty", FailureOf("<e><soapenv:Body/></e>"));

  // Wherever the reply breaks off before the end tag of its element, it is no reply.
  const std::string whole = Enveloped("<AResponse xmlns=\"u\"><r>1</r></AResponse>");
  const std::size_t end = whole.find("</AResponse>") + std::string("</AResponse>").size();
  for (std::size_t size = whole.find("<soapenv:Body id") + 13; size < end; ++size) {
    EXPECT_EQ(malformed, FailureOf(whole.substr(0, size))) << whole.substr(0, size);
  }
  EXPECT_EQ("nothing was thrown; content: <r>1</r>", FailureOf(whole.substr(0, end)));
}

TEST(SoapMessage, ReportsAFailedTransferBeforeAnEmptyReply) {
  Http::HttpResponse response;
  const auto failure = [&]() -> std::string {
    try {
      ThrowExceptionOnRequestError(response);
    } catch (const SoapException& e) {
      return e.What();
    }
    return "";
  };
  EXPECT_EQ("No Response Received.", failure());
  char text[] = "100%s lost";
  response.SetErrorCode(56);
  response.SetErrorString(text);
  EXPECT_EQ("HTTP Request Error. Code: 56 Message: 100%s lost", failure());
  response.AddContent("<part", 5);
  EXPECT_EQ("HTTP Request Error. Code: 56 Message: 100%s lost", failure());
  response.SetErrorCode(0);
  EXPECT_EQ("", failure());
}

}  // namespace
}  // namespace KELib::Soap
