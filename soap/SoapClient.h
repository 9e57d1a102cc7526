// SPDX-License-Identifier: MIT
//
// Sends SOAP calls to one server, and the life of the transport below.
//
// Thread safety: Request from any thread; each call takes its own connection. The proxy is set
//   before the first request.
#ifndef KECPP_SOAP_SOAPCLIENT_H
#define KECPP_SOAP_SOAPCLIENT_H

#include "foundation/KEExport.h"
#include "foundation/KEString.h"

namespace KELib::Http {
class ConnectionInfo;
}

namespace KELib::Soap {

class SoapRequest;
class SoapResponse;

class KECPP_API SoapClient {
 public:
  virtual ~SoapClient();

  // Sets host and port of a proxy and enables it, also when both are empty: an empty name means no
  // proxy. Takes effect on connections that are prepared afterwards.
  virtual void SetProxy(KEString& host, KEString& port) = 0;
  virtual void UnsetProxy() = 0;

  // Sends `request` and fills `response`. Blocks for the whole exchange, holding no lock.
  // Throws SoapException: a fault of the server (with fault information; the message is the fault's
  // type name), a failed transfer, or a reply that is no SOAP reply. RequestTimedOutException and
  // HttpException of the transport pass.
  virtual void Request(SoapRequest& request, SoapResponse& response) = 0;
};

// A client, owned by the caller, on a connection that passes to the client. Throws HttpException;
// the settings are as before then, and stay with the caller.
KECPP_API SoapClient* CreateSoapClient(Http::ConnectionInfo* ci);

// Start and end the HTTP service. Called once each by the process's entry.
KECPP_API void InitSoapService();
KECPP_API void ReleaseSoapService();

}  // namespace KELib::Soap

#endif
