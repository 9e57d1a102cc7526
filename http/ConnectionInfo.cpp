// SPDX-License-Identifier: MIT
#include "http/ConnectionInfo.h"

#include "http/HeaderInfoImpl.h"
#include "http/HttpConstants.h"
#include "http/Url.h"

namespace KELib {
namespace Http {

ConnectionInfo::ConnectionInfo(SSLInfo* ssl, const KEString& protocol, const KEString& host,
                               const KEString& portNumber, const KEString& path, bool keepsCookies)
    : sslInfo(ssl), maintainSession(keepsCookies) {
  proto = protocol;
  hostName = host;
  port = portNumber;
  pathSuffix = path;
  BuildUrl(proto, hostName, port, pathSuffix, url);
}

ConnectionInfo::ConnectionInfo(SSLInfo* ssl, const KEString& address, bool keepsCookies)
    : sslInfo(ssl), maintainSession(keepsCookies) {
  url = address;
  ParseUrl(url, proto, hostName, port, pathSuffix);
}

ConnectionInfo::~ConnectionInfo() = default;

void ConnectionInfo::SetSSLInfo(SSLInfo* ssl) {
  if (ssl != sslInfo.get()) sslInfo.reset(ssl);
}

bool ConnectionInfo::IsSecureConnection() const {
  return proto.Equals(HTTPS_PROTO);
}

void ConnectionInfo::AddHeader(const char* key, const char* value) {
  if (headerInfo == nullptr) headerInfo.reset(CreateHeaderInfo());
  headerInfo->AddHeader(key, value);
}

void ConnectionInfo::RemoveHeader(const char* key) {
  if (headerInfo != nullptr) headerInfo->RemoveHeader(key);
}

bool ConnectionInfo::HasHeaders() {
  return headerInfo != nullptr && headerInfo->HasHeaders();
}

const char* ConnectionInfo::GetHeader(const char* key) {
  return headerInfo != nullptr ? headerInfo->GetHeader(key) : nullptr;
}

}  // namespace Http
}  // namespace KELib
