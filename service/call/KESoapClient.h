// SPDX-License-Identifier: MIT
//
// The service layer's handle on the SOAP transport: made from the configuration, or from explicit
// settings.
//
// Thread safety: Init and the proxy before the first request; Request from any thread.
#ifndef KECPP_SERVICE_CALL_KESOAPCLIENT_H
#define KECPP_SERVICE_CALL_KESOAPCLIENT_H

#include "foundation/KEExport.h"
#include "foundation/KEString.h"

namespace KELib {
class KEConfig;
}
namespace KELib::Http {
class SSLInfo;
}
namespace KELib::Soap {
class SoapRequest;
class SoapResponse;
}  // namespace KELib::Soap

namespace KE::Service {

class KECPP_API KESoapClient {
 public:
  virtual ~KESoapClient();

  // Connects the handle to its server; nothing is sent yet. True when there is a SOAP client
  // afterwards. A handle that has one already is not changed. Settings that do not do are logged.
  // A client certificate is used when certFile, keyFile and CACertFile are all given; "https" needs
  // one. A `timeout` (seconds) of 0 or less means no limit.
  virtual bool Init(KELib::KEString& certFile, KELib::KEString& passPhrase,
                    KELib::KEString& keyFile, KELib::KEString& CACertFile, KELib::KEString& url,
                    long long timeout, bool verboseHttpLogging) = 0;

  // The same with a URL in parts. Empty ones become "https", "localhost" and "443".
  virtual bool Init(KELib::KEString& certFile, KELib::KEString& passPhrase,
                    KELib::KEString& keyFile, KELib::KEString& CACertFile, KELib::KEString& proto,
                    KELib::KEString& host, KELib::KEString& port, KELib::KEString& path,
                    long long timeout, bool verboseHttpLogging) = 0;

  // The same with the settings of a configuration document, proxy included. The document is read in
  // its own order and never backwards, so it must be one that nothing was read from. Throws
  // XmlException for a document that is not well-formed.
  virtual bool Init(KELib::KEConfig* config) = 0;

  // See SoapClient. Without a SOAP client these do nothing: a request is silently not sent.
  virtual void SetProxy(KELib::KEString& host, KELib::KEString& port) = 0;
  virtual void UnsetProxy() = 0;
  virtual void Request(KELib::Soap::SoapRequest& request, KELib::Soap::SoapResponse& response) = 0;
};

// A handle on which Init was called, owned by the caller; null when Init failed.
KECPP_API KESoapClient* CreateClient(KELib::KEConfig* config);
KECPP_API KESoapClient* CreateClient(KELib::KEString& certFile, KELib::KEString& passPhrase,
                                     KELib::KEString& keyFile, KELib::KEString& CACertFile,
                                     KELib::KEString& url, long long timeout,
                                     bool verboseHttpLogging);
KECPP_API KESoapClient* CreateClient(KELib::KEString& certFile, KELib::KEString& passPhrase,
                                     KELib::KEString& keyFile, KELib::KEString& CACertFile,
                                     KELib::KEString& proto, KELib::KEString& host,
                                     KELib::KEString& port, KELib::KEString& path,
                                     long long timeout, bool verboseHttpLogging);

// New settings for a client certificate, owned by the caller; null unless certFile, keyFile and
// CACertFile are all non-empty.
KECPP_API KELib::Http::SSLInfo* SetupSSLInfo(KELib::KEString& certFile, KELib::KEString& passPhrase,
                                             KELib::KEString& keyFile, KELib::KEString& CACertFile);

}  // namespace KE::Service

#endif
