// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "config/DefaultConfig.h"
#include "config/KEConfig.h"
#include "foundation/KEException.h"
#include "http/SSLInfo.h"
#include "service/call/KEMethodImpl.h"
#include "service/call/KESoapClientImpl.h"
#include "soap/SoapClient.h"
#include "soap/SoapRequest.h"
#include "soap/SoapResponse.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/RawServer.h"
#include "xml/KEXmlBuffer.h"

namespace KE::Service {
namespace {

using KELib::KEString;

const char* const kReply =
    "<e><soapenv:Body><PingResponse xmlns=\"u\">pong</PingResponse></soapenv:Body></e>";

std::string Element(const std::string& name, const std::string& value) {
  return "<" + name + ">" + value + "</" + name + ">\n";
}

class SoapClientSetupTest : public testing::Test {
 protected:
  static void SetUpTestSuite() { KELib::Soap::InitSoapService(); }
  static void TearDownTestSuite() { KELib::Soap::ReleaseSoapService(); }
  SoapClientSetupTest() {
    CapturedLog::Clear();
    server.SetHandler([](const RawServer::Request&) { return Reply::Ok(kReply); });
  }

  // Makes a client from a document with these elements.
  void Connect(const std::string& elements) {
    KEString source(("<?xml version=\"1.0\"?>\n<Config>\n" + elements + "</Config>\n").c_str());
    config.reset(KELib::CreateConfig(source, DEFAULT_CONFIG_CONTENT));
    client.reset(CreateClient(config.get()));
  }

  std::string Call() {
    KEString result;
    const std::unique_ptr<KEMethod> method(CreateMethod(client.get()));
    method->Invoke("u", "Ping", "T", "v", result);
    return result.Cstr();
  }

  RawServer server;
  std::unique_ptr<KELib::KEConfig> config;
  std::unique_ptr<KESoapClient> client;
};

TEST_F(SoapClientSetupTest, ConnectsToTheUrlOfTheConfiguration) {
  Connect(Element("url", server.Url("/sdk")) + Element("host", "ignored.invalid") +
          Element("timeout", "30"));
  ASSERT_NE(nullptr, client);
  EXPECT_EQ("pong", Call());
  EXPECT_EQ(0u, server.Requests()[0].head.find("POST /sdk HTTP/1.1\r\n"));
  EXPECT_TRUE(client->Init(config.get()));  // changes nothing: the proxy stays as it was
  EXPECT_EQ("pong", Call());
  EXPECT_TRUE(CapturedLog::Lines().empty());
}

TEST_F(SoapClientSetupTest, ConnectsToAUrlInParts) {
  Connect(Element("url", "") + Element("proto", "http") + Element("host", "127.0.0.1") +
          Element("port", std::to_string(server.Port())) + Element("path", "Sdk/x"));
  ASSERT_NE(nullptr, client);
  EXPECT_EQ("pong", Call());
  EXPECT_EQ(0u, server.Requests()[0].head.find("POST /Sdk/x HTTP/1.1\r\n"));
}

TEST_F(SoapClientSetupTest, GoesThroughTheProxy) {
  Connect(Element("url", "http://no-such-host.invalid/sdk") + Element("proxyHost", "127.0.0.1") +
          Element("proxyPort", std::to_string(server.Port())));
  ASSERT_NE(nullptr, client);
  EXPECT_EQ("pong", Call());
}

TEST_F(SoapClientSetupTest, AnEmptyAddressMeansTheSecureLocalServer) {
  Connect("");
  EXPECT_EQ(nullptr, client);
  ASSERT_EQ(1u, CapturedLog::Lines().size());
  EXPECT_EQ(
      "Exception creating soap client: No SSL information available for secure connection.",
      CapturedLog::Lines()[0].text);

  Connect(Element("certFile", "/nowhere/a") + Element("keyFile", "/nowhere/b") +
          Element("CACertFile", "/nowhere/c"));
  ASSERT_NE(nullptr, client);
  try {
    Call();
    FAIL() << "nothing was thrown";
  } catch (const KELib::Exception& e) {
    // No complaint about a missing protocol, host or port: the certificate comes next.
    EXPECT_EQ(0u, std::string(e.What()).find("HTTP Request Error. Code: 58 ")) << e.What();
  }
}

TEST_F(SoapClientSetupTest, ACertificateNeedsAllThreeFiles) {
  KEString file("f"), none;
  EXPECT_EQ(nullptr, SetupSSLInfo(none, file, file, file));
  EXPECT_EQ(nullptr, SetupSSLInfo(file, file, none, file));
  EXPECT_EQ(nullptr, SetupSSLInfo(file, file, file, none));
  const std::unique_ptr<KELib::Http::SSLInfo> info(SetupSSLInfo(file, none, file, file));
  ASSERT_NE(nullptr, info);
  EXPECT_STREQ("PEM", info->GetCertType().Cstr());
}

TEST_F(SoapClientSetupTest, ABadTimeOutIsLoggedAndMeansNoLimit) {
  Connect(Element("url", server.Url()) + Element("timeout", "soon%s"));
  ASSERT_NE(nullptr, client);
  ASSERT_EQ(1u, CapturedLog::Lines().size());
  EXPECT_EQ("Exception getting timeout value: NumberFormatException",
            CapturedLog::Lines()[0].text);
  EXPECT_EQ("pong", Call());
}

TEST_F(SoapClientSetupTest, TheTimeOutReachesTheTransfer) {
  Connect(Element("url", server.Url()) + Element("timeout", "1"));
  server.Push(Reply::Ok(kReply).Hanging());
  EXPECT_THROW(Call(), KELib::RequestTimedOutException);
}

TEST_F(SoapClientSetupTest, WithoutASoapClientNothingIsSent) {
  KESoapClientImpl unconnected;
  KELib::Xml::KEXmlBuffer body;
  KELib::Soap::SoapRequest request("u", "Ping", body);
  KELib::Soap::SoapResponse response;
  unconnected.Request(request, response);
  unconnected.UnsetProxy();
  unconnected.Interrupt();
  unconnected.Resume();
  EXPECT_TRUE(response.content.Empty());
  EXPECT_FALSE(unconnected.Init(nullptr));
  EXPECT_EQ(nullptr, CreateClient(nullptr));
}

}  // namespace
}  // namespace KE::Service
