// SPDX-License-Identifier: MIT
#include "soap/SoapClient.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "http/ConnectionInfo.h"
#include "http/HttpException.h"
#include "soap/SoapConstants.h"
#include "soap/SoapException.h"
#include "soap/SoapRequest.h"
#include "soap/SoapResponse.h"
#include "tests/support/RawServer.h"
#include "xml/KEXmlBuffer.h"

namespace KELib::Soap {
namespace {

std::string Enveloped(const std::string& body) {
  return SOAP_START + body + SOAP_END;
}

// What a call ends in, after "Fault: " when its reply was one, or the content of its reply.
std::string Call(const std::string& url) {
  InitSoapService();
  const std::unique_ptr<SoapClient> client(
      CreateSoapClient(new Http::ConnectionInfo(nullptr, url.c_str(), true)));
  Xml::KEXmlBuffer body;
  body.AddElementTagAndValue("Ping", "1");
  SoapRequest request("urn:pxa25", "Ping", body);
  SoapResponse response;
  try {
    client->Request(request, response);
  } catch (const SoapException& e) {
    return (e.GetFaultInfo() != nullptr ? "Fault: " : "") + std::string(e.What());
  }
  return response.content.Cstr();
}

TEST(SoapClient, SendsEnvelopeAndHeaders) {
  RawServer server;
  server.Push(Reply::Chunked(Enveloped("<PingResponse xmlns=\"u\"><r/></PingResponse>"), 7));
  EXPECT_EQ("<r/>", Call(server.Url("/sdk")));
  ASSERT_EQ(1u, server.Requests().size());
  const RawServer::Request sent = server.Requests()[0];
  EXPECT_EQ(Enveloped("<Ping>1</Ping>\n"), sent.body);
  EXPECT_NE(std::string::npos,
            sent.head.find("\r\nUserAgent: mpxa/0.1\r\nCache-Control: no-cache\r\n"
                           "Content-Type: text/xml; charset=utf-8\r\n"
                           "SOAPAction:\r\n"))
      << sent.head;
}

TEST(SoapClient, TellsFailuresApart) {
  std::string gone;
  {
    RawServer server;
    gone = server.Url();
    EXPECT_EQ("No Response Received.", Call(gone));
    server.Push(Reply::Status("500 Error", "<html><p>sorry</html>"));
    EXPECT_EQ("No Soap Body found in Response", Call(gone));
    server.Push(Reply::Status("500 Error", Enveloped("<soapenv:Fault><detail><XFault/></detail>"
                                                     "</soapenv:Fault>")));
    EXPECT_EQ("Fault: X", Call(gone));
    server.Push(Reply::Ok(Enveloped("<PingResponse/>")).CutAfter(200));
    EXPECT_EQ(0u, Call(gone).find("HTTP Request Error. Code: 18 Message: "));
  }
  EXPECT_EQ(0u, Call(gone).find("HTTP Request Error. Code: 7 Message: Failed to connect"));
}

TEST(SoapClient, SettingsStayWithTheCallerWhenNoClientCanBeMade) {
  Http::ConnectionInfo secure(nullptr, "https://localhost/", true);
  EXPECT_THROW(CreateSoapClient(&secure), Http::HttpException);
}

}  // namespace
}  // namespace KELib::Soap
