// SPDX-License-Identifier: MIT
#include "soap/SoapMessage.h"

#include <gtest/gtest.h>

#include <string>

#include "http/HttpResponse.h"
#include "soap/SoapConstants.h"
#include "soap/SoapException.h"
#include "soap/SoapResponse.h"

namespace KELib::Soap {
namespace {

std::string Enveloped(const std::string& body) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<!-- soapenv:Body <a -->\r\n"
         "<soapenv:Envelope xmlns:xsd=\"a>b\" xmlns:soapenv='http://x/'>\r\n"
         "<soapenv:Header><s:id xmlns:s=\"s\">soapenv:Body</s:id><s:none/></soapenv:Header>\r\n"
         "<soapenv:Body id=\"1\">" +
         body + "</soapenv:Body>\r\n</soapenv:Envelope>\r\n";
}

std::string FailureOf(const std::string& reply) {
  KEString content(reply.c_str());
  SoapResponse response;
  try {
    ExtractMessageContent(content, response);
  } catch (const SoapException& e) {
    return e.What();
  }
  return "nothing was thrown; content: " + std::string(response.content.Cstr());
}

TEST(SoapMessage, TheEnvelopeIsKnownToTheByte) {
  EXPECT_STREQ(
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<soapenv:Envelope xmlns:soapenc=\"http://schemas.xmlsoap.org/soap/encoding/\"\n"
      " xmlns:soapenv=\"http://schemas.xmlsoap.org/soap/envelope/\"\n"
      " xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\"\n"
      " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\">\n<soapenv:Body>\n",
      SOAP_START);
  EXPECT_STREQ("\n</soapenv:Body>\n</soapenv:Envelope>", SOAP_END);
}

TEST(SoapMessage, CutsTheReplyOut) {
  const struct {
    const char *body, *ns, *name, *content;
  } cases[] = {
      {"<LoginResponse xmlns=\"urn:pxa25\"><r>a</r></LoginResponse>", "urn:pxa25", "Login",
       "<r>a</r>"},
      {"\r\n <!-- <XResponse> -->\n<LoginResponse\n xmlns = 'u' a=\"b\" >\r\n <r/>\r\n"
       "</LoginResponse\n>\r\n",
       "u", "Login", "\r\n <r/>\r\n"},
      {"<LogoutResponse xmlns=\"urn:pxa25\"/>", "urn:pxa25", "Logout", ""},
      {"<LogoutResponse>\r\n\t</LogoutResponse>", "", "Logout", ""},
      // What looks like the end is content: a section, a nested element, a longer name.
      {"<AResponse x=\"1\" xmlns=\"u\"><![CDATA[</AResponse>]]><AResponse></AResponse>"
       "</AResponse><AResponseX></AResponseX>",
       "1", "A", "<![CDATA[</AResponse>]]><AResponse></AResponse>"},
      {"<GetResponseNowResponse>1</GetResponseNowResponse>", "", "Get", "1"},
      {"<Ping>&lt;</Ping>", "", "Ping", "&lt;"},
      {"<soapenv:Fault xmlns=\"u\"><a>1</a></soapenv:Fault>", "", "soapenv:Fault", "<a>1</a>"},
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
  }
}

TEST(SoapMessage, RefusesWhatIsNoReply) {
  const std::string noBody = "No Soap Body found in Response";
  const std::string empty = "Response Content is empty";
  EXPECT_EQ(empty, FailureOf(""));
  EXPECT_EQ(empty, FailureOf(Enveloped("")));
  EXPECT_EQ(empty, FailureOf("<e><soapenv:Body/></e>"));
  EXPECT_EQ(noBody, FailureOf("<html><p>a < b & \"c</html>"));
  EXPECT_EQ(noBody, FailureOf("<"));
  EXPECT_EQ(noBody, FailureOf("<env:Envelope><env:Body><A/></env:Body></env:Envelope>"));
  EXPECT_EQ(noBody, FailureOf("<e><!-- <soapenv:Body> --></e>"));

  // Wherever the reply breaks off before the end tag of its element, it is no reply.
  const std::string whole = Enveloped("<AResponse xmlns=\"u\"><r>1</r></AResponse>");
  const std::size_t end = whole.find("</soapenv:Body>");
  for (std::size_t size = whole.find("<soapenv:Body id") + 13; size < end; ++size) {
    const std::string cut = whole.substr(0, size);
    EXPECT_EQ("Malformed XML. Missing element end.", FailureOf(cut)) << cut;
  }
  EXPECT_EQ("nothing was thrown; content: <r>1</r>", FailureOf(whole.substr(0, end)));
}

TEST(SoapMessage, ATransfersErrorComesBeforeItsContent) {
  Http::HttpResponse response;
  response.SetErrorCode(56);
  response.SetErrorString("100%s lost");
  response.AddContent("<part", 5);
  try {
    ThrowExceptionOnRequestError(response);
    FAIL() << "nothing was thrown";
  } catch (const SoapException& e) {
    EXPECT_STREQ("HTTP Request Error. Code: 56 Message: 100%s lost", e.What());
  }
}

}  // namespace
}  // namespace KELib::Soap
