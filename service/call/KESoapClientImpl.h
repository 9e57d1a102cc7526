// SPDX-License-Identifier: MIT
//
// The one implementation of KESoapClient.
#ifndef KECPP_SERVICE_CALL_KESOAPCLIENTIMPL_H
#define KECPP_SERVICE_CALL_KESOAPCLIENTIMPL_H

#include <memory>

#include "foundation/KEExport.h"
#include "foundation/KEString.h"
#include "service/call/KESoapClient.h"
#include "soap/SoapClient.h"

namespace KELib::Http {
class ConnectionInfo;
}

namespace KE::Service {

class KECPP_API KESoapClientImpl : public KESoapClient {
 public:
  KESoapClientImpl();
  ~KESoapClientImpl() override;
  KESoapClientImpl(const KESoapClientImpl&) = delete;
  KESoapClientImpl& operator=(const KESoapClientImpl&) = delete;

  bool Init(KELib::KEString& certFile, KELib::KEString& passPhrase, KELib::KEString& keyFile,
            KELib::KEString& CACertFile, KELib::KEString& url, long long timeout,
            bool verboseHttpLogging) override;
  bool Init(KELib::KEString& certFile, KELib::KEString& passPhrase, KELib::KEString& keyFile,
            KELib::KEString& CACertFile, KELib::KEString& proto, KELib::KEString& host,
            KELib::KEString& port, KELib::KEString& path, long long timeout,
            bool verboseHttpLogging) override;
  bool Init(KELib::KEConfig* config) override;
  void SetProxy(KELib::KEString& host, KELib::KEString& port) override;
  void UnsetProxy() override;
  void Request(KELib::Soap::SoapRequest& request, KELib::Soap::SoapResponse& response) override;

  // Owns `connectionInfo` and makes the SOAP client on it. A failure is logged: there is no client
  // then.
  void InitClient(KELib::Http::ConnectionInfo* connectionInfo, long long timeout,
                  bool verboseHttpLogging);

  // Deletes the SOAP client. No request may be under way.
  void ReleaseClient();

 private:
  std::unique_ptr<KELib::Soap::SoapClient> soapClient;
  KELib::KEString reserved;  // always empty
};

}  // namespace KE::Service

#endif
