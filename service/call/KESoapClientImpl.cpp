// SPDX-License-Identifier: MIT
#include "service/call/KESoapClientImpl.h"

#include "config/KEConfig.h"
#include "foundation/KEException.h"
#include "foundation/Logger.h"
#include "foundation/StringUtil.h"
#include "http/CallTrace.h"
#include "http/ConnectionInfo.h"
#include "http/HttpConstants.h"
#include "http/SSLInfo.h"
#include "service/call/ServiceConstants.h"
#include "soap/SoapClient.h"

namespace KE::Service {

namespace {

using KELib::KEString;
using KELib::Http::CallTrace;
using KELib::Http::ConnectionInfo;

// Cookies are always kept: they are the login.
constexpr bool kMaintainSession = true;

// The configuration's texts, in the order in which the document has them.
struct Settings {
  KEString certFile, passPhrase, keyFile, CACertFile, url, proto, host, port, path, proxyHost,
      proxyPort, timeout, verboseHttpLogging;
};

void ReadSettings(KELib::KEConfig& config, Settings& settings) {
  config.GetConfigValue(KEY_CERTFILE, settings.certFile);
  config.GetConfigValue(KEY_PASSPHRASE, settings.passPhrase);
  config.GetConfigValue(KEY_KEYFILE, settings.keyFile);
  config.GetConfigValue(KEY_CACERTFILE, settings.CACertFile);
  config.GetConfigValue(KEY_URL, settings.url);
  config.GetConfigValue(KEY_PROTO, settings.proto);
  config.GetConfigValue(KEY_HOST, settings.host);
  config.GetConfigValue(KEY_PORT, settings.port);
  config.GetConfigValue(KEY_PATH, settings.path);
  config.GetConfigValue(KEY_PROXYHOST, settings.proxyHost);
  config.GetConfigValue(KEY_PROXYPORT, settings.proxyPort);
  config.GetConfigValue(KEY_TIMEOUT, settings.timeout);
  config.GetConfigValue(KEY_VERBOSE_HTTP_LOG, settings.verboseHttpLogging);
}

long long ParseTimeout(const KEString& text) {
  if (text.Empty()) return -1;
  try {
    return KELib::StringUtil::ParseLong(text.Cstr());
  } catch (const KELib::Exception& e) {
    KELib::Logging::Log(nullptr, KELib::Logging::LOG_LEVEL_VERBOSE,
                        "Exception getting timeout value: %s", e.What());
    return -1;
  }
}

// The URL has these defaults already; the transport refuses to connect while a part is empty.
void FillEmptyParts(ConnectionInfo& info) {
  if (info.GetProto().Empty()) info.SetProto(KELib::Http::HTTPS_PROTO);
  if (info.GetHostName().Empty()) info.SetHostName(KELib::Http::LOCALHOST);
  if (info.GetPort().Empty()) info.SetPort(KELib::Http::HTTPS_PORT);
}

template <typename... Settings>
KESoapClient* CreateInitialized(Settings&&... settings) {
  auto client = std::make_unique<KESoapClientImpl>();
  if (client->Init(settings...)) return client.release();
  client->ReleaseClient();
  return nullptr;
}

}  // namespace

KESoapClient::~KESoapClient() = default;

KESoapClient* CreateClient(KELib::KEConfig* config) {
  return CreateInitialized(config);
}

KESoapClient* CreateClient(KEString& certFile, KEString& passPhrase, KEString& keyFile,
                           KEString& CACertFile, KEString& url, long long timeout,
                           bool verboseHttpLogging) {
  return CreateInitialized(certFile, passPhrase, keyFile, CACertFile, url, timeout,
                           verboseHttpLogging);
}

KESoapClient* CreateClient(KEString& certFile, KEString& passPhrase, KEString& keyFile,
                           KEString& CACertFile, KEString& proto, KEString& host, KEString& port,
                           KEString& path, long long timeout, bool verboseHttpLogging) {
  return CreateInitialized(certFile, passPhrase, keyFile, CACertFile, proto, host, port, path,
                           timeout, verboseHttpLogging);
}

KELib::Http::SSLInfo* SetupSSLInfo(KEString& certFile, KEString& passPhrase, KEString& keyFile,
                                   KEString& CACertFile) {
  if (certFile.Empty() || keyFile.Empty() || CACertFile.Empty()) return nullptr;
  return new KELib::Http::SSLInfo(certFile, passPhrase, keyFile, CACertFile);
}

KESoapClientImpl::KESoapClientImpl() = default;

KESoapClientImpl::~KESoapClientImpl() {
  ReleaseClient();
}

bool KESoapClientImpl::Init(KEString& certFile, KEString& passPhrase, KEString& keyFile,
                            KEString& CACertFile, KEString& url, long long timeout,
                            bool verboseHttpLogging) {
  if (soapClient) return true;
  auto info = std::make_unique<ConnectionInfo>(nullptr, url, kMaintainSession);
  info->SetSSLInfo(SetupSSLInfo(certFile, passPhrase, keyFile, CACertFile));
  InitClient(info.release(), timeout, verboseHttpLogging);
  return soapClient != nullptr;
}

bool KESoapClientImpl::Init(KEString& certFile, KEString& passPhrase, KEString& keyFile,
                            KEString& CACertFile, KEString& proto, KEString& host, KEString& port,
                            KEString& path, long long timeout, bool verboseHttpLogging) {
  if (soapClient) return true;
  auto info = std::make_unique<ConnectionInfo>(nullptr, proto, host, port, path, kMaintainSession);
  info->SetSSLInfo(SetupSSLInfo(certFile, passPhrase, keyFile, CACertFile));
  FillEmptyParts(*info);
  InitClient(info.release(), timeout, verboseHttpLogging);
  return soapClient != nullptr;
}

bool KESoapClientImpl::Init(KELib::KEConfig* config) {
  if (soapClient) return true;
  if (config == nullptr) return false;
  Settings s;
  ReadSettings(*config, s);
  const long long timeout = ParseTimeout(s.timeout);
  const bool verbose = KELib::StringUtil::ParseBool(s.verboseHttpLogging.Cstr());
  if (!s.url.Empty()) {
    Init(s.certFile, s.passPhrase, s.keyFile, s.CACertFile, s.url, timeout, verbose);
  } else {
    Init(s.certFile, s.passPhrase, s.keyFile, s.CACertFile, s.proto, s.host, s.port, s.path,
         timeout, verbose);
  }
  SetProxy(s.proxyHost, s.proxyPort);
  return soapClient != nullptr;
}

void KESoapClientImpl::InitClient(ConnectionInfo* connectionInfo, long long timeout,
                                  bool verboseHttpLogging) {
  std::unique_ptr<ConnectionInfo> info(connectionInfo);
  CallTrace* trace = CallTrace::Current();
  if (trace != nullptr) trace->url = info->GetUrl();
  if (timeout > 0) info->SetTimeout(timeout);
  if (verboseHttpLogging) {
    info->EnableVerboseHttpLog();
  } else {
    info->DisableVerboseHttpLog();
  }
  try {
    soapClient.reset(KELib::Soap::CreateSoapClient(info.get()));
    info.release();  // the client owns it now; it did not when it could not be made
  } catch (const KELib::Exception& e) {
    KELib::Logging::Log(nullptr, KELib::Logging::LOG_LEVEL_VERBOSE,
                        "Exception creating soap client: %s", e.What());
    if (trace != nullptr) trace->before = e.What();
  }
}

void KESoapClientImpl::ReleaseClient() {
  soapClient.reset();
}

void KESoapClientImpl::SetProxy(KEString& host, KEString& port) {
  if (soapClient) soapClient->SetProxy(host, port);
}

void KESoapClientImpl::UnsetProxy() {
  if (soapClient) soapClient->UnsetProxy();
}

void KESoapClientImpl::Request(KELib::Soap::SoapRequest& request,
                               KELib::Soap::SoapResponse& response) {
  if (soapClient) soapClient->Request(request, response);
}

}  // namespace KE::Service
