// SPDX-License-Identifier: MIT
//
// Where and how the transport talks to the server: address, proxy, time-out, headers, certificate.
//
// The setters are plain assignments: none of them rebuilds the URL or takes it apart. Requests are
// posted to the URL. Everything but the URL is read when a connection's handle is used for the
// first time, so later changes reach only handles that have not been used yet.
//
// Thread safety: none. Once a client exists, change nothing while a thread posts.
// Ownership: owns its SSL settings and its headers.
#ifndef KECPP_HTTP_CONNECTIONINFO_H
#define KECPP_HTTP_CONNECTIONINFO_H

#include <memory>

#include "foundation/KEExport.h"
#include "foundation/KEString.h"
#include "http/HeaderInfo.h"
#include "http/SSLInfo.h"

namespace KELib {
namespace Http {

class KECPP_API ConnectionInfo {
 public:
  // Keeps the parts as given; only the URL gets the defaults of BuildUrl. Takes `ssl`, which may be
  // null, over.
  ConnectionInfo(SSLInfo* ssl, const KEString& proto, const KEString& host, const KEString& port,
                 const KEString& path, bool maintainSession);

  // Fills the parts with ParseUrl. Takes `ssl`, which may be null, over.
  ConnectionInfo(SSLInfo* ssl, const KEString& url, bool maintainSession);

  ConnectionInfo(const ConnectionInfo&) = delete;
  ConnectionInfo& operator=(const ConnectionInfo&) = delete;
  ~ConnectionInfo();

  // Takes `ssl` over and deletes the previous settings.
  void SetSSLInfo(SSLInfo* ssl);
  SSLInfo* GetSSLInfo() { return sslInfo.get(); }

  void SetProto(const KEString& value) { proto = value; }
  void SetHostName(const KEString& value) { hostName = value; }
  void SetPort(const KEString& value) { port = value; }
  void SetPathSuffix(const KEString& value) { pathSuffix = value; }
  void SetUrl(const KEString& value) { url = value; }
  KEString& GetProto() { return proto; }
  KEString& GetHostName() { return hostName; }
  KEString& GetPort() { return port; }
  KEString& GetPathSuffix() { return pathSuffix; }
  KEString& GetUrl() { return url; }

  // True exactly for the protocol "https", in this letter case.
  bool IsSecureConnection() const;

  // A disabled proxy means a direct connection, whatever the environment says.
  void EnableSettingProxy() { canSetProxy = true; }
  void DisableSettingProxy() { canSetProxy = false; }
  bool CanSetProxy() const { return canSetProxy; }
  void SetProxyHost(const KEString& value) { proxyHost = value; }
  void SetProxyPort(const KEString& value) { proxyPort = value; }
  KEString& GetProxyHost() { return proxyHost; }
  KEString& GetProxyPort() { return proxyPort; }

  // Verbose: libcurl writes what it does, and a progress meter, to standard error.
  void EnableVerboseHttpLog() { verboseHttpLog = true; }
  void DisableVerboseHttpLog() { verboseHttpLog = false; }
  bool IsHttpLogVerbose() const { return verboseHttpLog; }

  // Whether cookies are kept between requests.
  void SetMaintainSession() { maintainSession = true; }
  void ClearMaintainSession() { maintainSession = false; }
  bool IsSessionMaintained() const { return maintainSession; }

  // Of a whole transfer, in seconds; 0 and less: no limit. At most 2147483 seconds take effect.
  void SetTimeout(long long seconds) { timeout = seconds; }
  long long GetTimeout() const { return timeout; }

  // The headers' operations; AddHeader makes the list. Without a list there is nothing to remove,
  // no header, and GetHeader and GetHeaderInfo return null.
  void AddHeader(const char* key, const char* value);
  void RemoveHeader(const char* key);
  bool HasHeaders();
  const char* GetHeader(const char* key);
  HeaderInfo* GetHeaderInfo() { return headerInfo.get(); }

 private:
  KEString proto;
  KEString hostName;
  KEString port;
  KEString pathSuffix;
  bool canSetProxy = false;
  KEString proxyHost;
  KEString proxyPort;
  KEString url;
  bool verboseHttpLog = false;
  std::unique_ptr<SSLInfo> sslInfo;
  std::unique_ptr<HeaderInfo> headerInfo;
  bool maintainSession;
  long long timeout = 0;
};

}  // namespace Http
}  // namespace KELib

#endif
