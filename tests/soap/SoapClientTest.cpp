// SPDX-License-Identifier: MIT
#include "soap/SoapClient.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "foundation/KEException.h"
#include "http/ConnectionInfo.h"
#include "http/HttpException.h"
#include "soap/SoapConstants.h"
#include "soap/SoapException.h"
#include "soap/SoapHttpClientImpl.h"
#include "soap/SoapRequest.h"
#include "soap/SoapResponse.h"
#include "tests/support/RawServer.h"
#include "xml/KEXmlBuffer.h"

namespace KELib::Soap {
namespace {

std::string Enveloped(const std::string& body) { return SOAP_START + body + SOAP_END; }

class SoapClientTest : public testing::Test {
 protected:
  static void SetUpTestSuite() { InitSoapService(); }
  static void TearDownTestSuite() { ReleaseSoapService(); }

  void Connect(const std::string& url) {
    settings = new Http::ConnectionInfo(nullptr, KEString(url.c_str()), true);
    client.reset(CreateSoapClient(settings));
  }

  // The message of the SoapException that a call ends in, or the content of its reply.
  std::string Call() {
    Xml::KEXmlBuffer body;
    body.AddElementTagAndValue("Ping", "1");
    SoapRequest request("urn:pxa25", "Ping", body);
    SoapResponse response;
    try {
      client->Request(request, response);
    } catch (const SoapException& e) {
      isFault = e.GetFaultInfo() != nullptr;
      return e.What();
    }
    return response.content.Cstr();
  }

  RawServer server;
  Http::ConnectionInfo* settings = nullptr;  // the client's
  std::unique_ptr<SoapClient> client;
  bool isFault = false;
};

TEST_F(SoapClientTest, SendsEnvelopeAndHeaders) {
  Connect(server.Url("/sdk"));
  server.Push(Reply::Chunked(Enveloped("<PingResponse xmlns=\"u\"><r/></PingResponse>"), 7));
  EXPECT_EQ("<r/>", Call());
  ASSERT_EQ(1u, server.Requests().size());
  const RawServer::Request sent = server.Requests()[0];
  EXPECT_EQ(Enveloped("<Ping>1</Ping>\n"), sent.body);
  const char* const lines[] = {"POST /sdk HTTP/1.1\r\n", "\r\nUserAgent: mpxa/0.1\r\n",
                               "\r\nCache-Control: no-cache\r\n",
                               "\r\nContent-Type: text/xml; charset=utf-8\r\n",
                               "\r\nSOAPAction:\r\n"};
  std::size_t at = 0;
  for (const char* line : lines) {
    const std::size_t found = sent.head.find(line, at);
    ASSERT_NE(std::string::npos, found) << line << " in " << sent.head;
    at = found;
  }
}

TEST_F(SoapClientTest, TellsFailuresApart) {
  Connect(server.Url());
  EXPECT_EQ("No Response Received.", Call());
  server.Push(Reply::Status("500 Error", "<html><p>sorry</html>"));
  EXPECT_EQ("No Soap Body found in Response", Call());
  EXPECT_FALSE(isFault);
  server.Push(Reply::Status("500 Error", Enveloped("<soapenv:Fault><detail><XFault/></detail>"
                                                   "</soapenv:Fault>")));
  EXPECT_EQ("X", Call());
  EXPECT_TRUE(isFault);
  server.Push(Reply::Ok(Enveloped("<PingResponse/>")).CutAfter(200));
  EXPECT_EQ(0u, Call().find("HTTP Request Error. Code: 18 Message: "));
}

TEST_F(SoapClientTest, ReportsARefusedConnection) {
  std::string url;
  {
    RawServer gone;
    url = gone.Url();
  }
  Connect(url);
  const std::string text = Call();
  EXPECT_EQ(0u, text.find("HTTP Request Error. Code: 7 Message: ")) << text;
  EXPECT_GT(text.size(), std::string("HTTP Request Error. Code: 7 Message: ").size());
}

TEST_F(SoapClientTest, TheProxyIsSetBeforeTheFirstRequest) {
  Connect("http://no-such-host.invalid/sdk");
  KEString host("127.0.0.1"), port(std::to_string(server.Port()).c_str());
  client->SetProxy(host, port);
  EXPECT_TRUE(settings->CanSetProxy());
  server.Push(Reply::Ok(Enveloped("<PingResponse>by proxy</PingResponse>")));
  EXPECT_EQ("by proxy", Call());
  client->UnsetProxy();
  EXPECT_FALSE(settings->CanSetProxy());
  EXPECT_TRUE(settings->GetProxyHost().Empty() && settings->GetProxyPort().Empty());
}

TEST_F(SoapClientTest, ATimeOutPasses) {
  Connect(server.Url());
  settings->SetTimeout(1);
  server.Push(Reply::Ok("").Hanging());
  EXPECT_THROW(Call(), RequestTimedOutException);
}

TEST_F(SoapClientTest, InterruptEndsCallsUntilResume) {
  Connect(server.Url());
  auto& impl = dynamic_cast<SoapHttpClientImpl&>(*client);
  impl.Interrupt();
  EXPECT_EQ(0u, Call().find("HTTP Request Error. Code: "));
  impl.Resume();
  EXPECT_EQ("No Response Received.", Call());
}

TEST_F(SoapClientTest, SettingsStayWithTheCallerWhenNoClientCanBeMade) {
  auto secure = std::make_unique<Http::ConnectionInfo>(nullptr, "https://localhost/", true);
  EXPECT_THROW(CreateSoapClient(secure.get()), Http::HttpException);
  SoapHttpClientImpl unconnected;
  KEString none;
  unconnected.SetProxy(none, none);
  unconnected.UnsetProxy();
  unconnected.Interrupt();
}

}  // namespace
}  // namespace KELib::Soap
