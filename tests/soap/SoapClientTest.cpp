// SPDX-License-Identifier: MIT
#include "soap/SoapClient.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "http/ConnectionInfo.h"
#include "http/HttpException.h"
#include "soap/SoapConstants.h"
#include "soap/SoapRequest.h"
#include "soap/SoapResponse.h"
#include "tests/support/RawServer.h"
#include "xml/KEXmlBuffer.h"

namespace KELib::Soap {
namespace {

std::string Enveloped(const std::string& body) {
  return SOAP_START + body + SOAP_END;
}

TEST(SoapClient, SendsEnvelopeAndHeaders) {
  RawServer server;
  server.Push(Reply::Chunked(Enveloped("<PingResponse xmlns=\"u\"><r/></PingResponse>"), 7));
  InitSoapService();
  const std::unique_ptr<SoapClient> client(
      CreateSoapClient(new Http::ConnectionInfo(nullptr, server.Url("/sdk").c_str(), true)));
  Xml::KEXmlBuffer body;
  body.AddElementTagAndValue("Ping", "1");
  SoapRequest request("urn:pxa25", "Ping", body);
  SoapResponse response;
  client->Request(request, response);
  EXPECT_STREQ("<r/>", response.content.Cstr());
  ASSERT_EQ(1u, server.Requests().size());
  const RawServer::Request sent = server.Requests()[0];
  EXPECT_EQ(Enveloped("<Ping>1</Ping>\n"), sent.body);
  EXPECT_NE(std::string::npos,
            sent.head.find("\r\nUserAgent: mpxa/0.1\r\nCache-Control: no-cache\r\n"
                           "Content-Type: text/xml; charset=utf-8\r\n"
                           "SOAPAction:\r\n"))
      << sent.head;
}

TEST(SoapClient, SettingsStayWithTheCallerWhenNoClientCanBeMade) {
  Http::ConnectionInfo secure(nullptr, "https://localhost/", true);
  secure.AddHeader("Cache-Control: ", "mine");
  EXPECT_THROW(CreateSoapClient(&secure), Http::HttpException);
  EXPECT_STREQ("Cache-Control: mine", secure.GetHeader("Cache-Control: "));
  secure.RemoveHeader("Cache-Control: ");
  EXPECT_FALSE(secure.HasHeaders()) << "a second try would send them twice";
}

}  // namespace
}  // namespace KELib::Soap
