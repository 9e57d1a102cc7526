// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "config/DefaultConfig.h"
#include "config/KEConfig.h"
#include "foundation/KEException.h"
#include "http/CallLimits.h"
#include "http/Interrupter.h"
#include "service/call/KEMethodImpl.h"
#include "service/call/KESoapClientImpl.h"
#include "soap/SoapClient.h"
#include "support/CapturedLog.h"
#include "support/RawServer.h"

namespace KE::Service {
namespace {

using KELib::KEString;

std::string Element(const std::string& name, const std::string& value) {
  return "<" + name + ">" + value + "</" + name + ">\n";
}

class SoapClientSetupTest : public testing::Test {
 protected:
  SoapClientSetupTest() {
    KELib::Soap::InitSoapService();
    CapturedLog::Clear();
    server.SetHandler([](const RawServer::Request&) {
      return Reply::Ok("<soapenv:Body><PingResponse>pong</PingResponse></soapenv:Body>");
    });
  }

  std::string Proxy() {
    return Element("proxyHost", "127.0.0.1") + Element("proxyPort", std::to_string(server.Port()));
  }

  // Makes a client from a document with these elements, or expects that it cannot be made.
  void Connect(const std::string& elements, bool can = true) {
    KEString source(("<?xml version=\"1.0\"?>\n<Config>\n" + elements + "</Config>\n").c_str());
    config.reset(KELib::CreateConfig(source, DEFAULT_CONFIG_CONTENT));
    client.reset(CreateClient(config.get()));
    ASSERT_EQ(can, client != nullptr);
    method.Init(client.get());
  }

  std::string Call() {
    KEString result;
    method.Invoke("u", "Ping", "T", "v", result);
    return result.Cstr();
  }

  // The only line that was logged.
  static std::string LogLine() {
    return CapturedLog::Lines().size() == 1 ? CapturedLog::Lines()[0].text : "not one line";
  }

  // The first request's first line.
  std::string FirstLine() {
    return server.Requests().empty() ? "" : server.Requests()[0].head.substr(0, 32);
  }

  RawServer server;
  std::unique_ptr<KELib::KEConfig> config;
  std::unique_ptr<KESoapClient> client;
  KEMethodImpl method;
};

TEST_F(SoapClientSetupTest, ConnectsThroughTheProxyToTheUrl) {
  Connect(Element("url", "http://no-such-host.invalid/a") + Element("host", "ignored") + Proxy());
  EXPECT_TRUE(client->Init(config.get()));  // changes nothing: the proxy stays
  EXPECT_EQ("pong", Call());
  EXPECT_EQ("POST http://no-such-host.invalid", FirstLine());
}

TEST_F(SoapClientSetupTest, ConnectsToAUrlInParts) {
  Connect(Element("url", "") + Element("proto", "http") + Element("host", "127.0.0.1") +
          Element("port", std::to_string(server.Port())) + Element("path", "Sdk/x") +
          Element("timeout", "soon%s"));
  EXPECT_EQ("Exception getting timeout value: NumberFormatException", LogLine());
  EXPECT_EQ("pong", Call());
  EXPECT_EQ(0u, FirstLine().find("POST /Sdk/x HTTP/1.1\r\n"));
}

TEST_F(SoapClientSetupTest, ConnectsWithoutADocument) {
  KEString none, file("/nowhere"), url(server.Url("/one").c_str()), http("http"), https("https");
  KEString host("127.0.0.1"), port(std::to_string(server.Port()).c_str()), path("two");
  const std::unique_ptr<KESoapClient> clients[] = {
      std::unique_ptr<KESoapClient>(CreateClient(none, none, none, none, url, 1, false)),
      std::unique_ptr<KESoapClient>(
          CreateClient(none, none, none, none, http, host, port, path, 1, false))};
  const char* const lines[] = {"POST /one HTTP/1.1\r\n", "POST /two HTTP/1.1\r\n"};
  for (int i = 0; i < 2; ++i) {
    KEMethodImpl invoker;
    invoker.Init(clients[i].get());
    KEString result;
    invoker.Invoke("u", "Ping", "T", "v", result);
    EXPECT_STREQ("pong", result.Cstr());
    EXPECT_EQ(0u, server.Requests().back().head.find(lines[i]));
    server.Push(Reply::Ok("").Hanging());
    EXPECT_THROW(invoker.Invoke("u", "Ping", "T", "v", result), KELib::RequestTimedOutException);
  }
  EXPECT_EQ(nullptr, CreateClient(file, file, none, file, https, host, port, path, 1, false));
}

TEST_F(SoapClientSetupTest, AnEmptyAddressMeansTheSecureLocalServer) {
  const std::string files = Element("certFile", "/nowhere/a") + Element("keyFile", "/nowhere/b");
  Connect(files, false);
  EXPECT_EQ("Exception creating soap client: No SSL information available for secure connection.",
            LogLine());
  // A proxy tells where the connection was to go.
  server.Push(Reply::Status("403 Forbidden", ""));
  Connect(files + Element("CACertFile", "/nowhere/c") + Proxy());
  EXPECT_THROW(Call(), KELib::SystemException);
  EXPECT_EQ(0u, FirstLine().find("CONNECT localhost:443 HTTP/1.1\r\n"));
}

TEST_F(SoapClientSetupTest, TimeOutAndInterruptionReachTheTransfer) {
  Connect(Element("url", server.Url()) + Element("timeout", "1"));
  server.Push(Reply::Ok("").Hanging());
  EXPECT_THROW(Call(), KELib::RequestTimedOutException);
  KELib::Http::Interrupter interrupter;
  interrupter.Interrupt();
  const KELib::Http::CallLimits limits(&interrupter);
  EXPECT_THROW(Call(), KELib::SystemException);
  interrupter.Resume();
  EXPECT_EQ("pong", Call());
}

TEST_F(SoapClientSetupTest, WithoutASoapClientNothingIsSent) {
  KESoapClientImpl unconnected;
  method.Init(&unconnected);
  EXPECT_EQ("", Call());
  unconnected.UnsetProxy();
  EXPECT_FALSE(unconnected.Init(nullptr));
}

}  // namespace
}  // namespace KE::Service
