// SPDX-License-Identifier: MIT
//
// The one implementation of SoapClient: every call is one HTTP POST.
#ifndef KECPP_SOAP_SOAPHTTPCLIENTIMPL_H
#define KECPP_SOAP_SOAPHTTPCLIENTIMPL_H

#include <memory>

#include "foundation/KEExport.h"
#include "http/HttpClient.h"
#include "soap/SoapClient.h"

namespace KELib::Soap {

class KECPP_API SoapHttpClientImpl : public SoapClient {
 public:
  SoapHttpClientImpl();
  ~SoapHttpClientImpl() override;  // deletes the connection's settings with the HTTP client
  SoapHttpClientImpl(const SoapHttpClientImpl&) = delete;
  SoapHttpClientImpl& operator=(const SoapHttpClientImpl&) = delete;

  // Adds the SOAP headers to the settings and makes the HTTP client, which owns them from then on.
  // Throws HttpException; the settings are as before then, and stay with the caller.
  void Init(Http::ConnectionInfo* ci);

  // Before Init nothing happens, and Request throws SoapException.
  void SetProxy(KEString& host, KEString& port) override;
  void UnsetProxy() override;
  void Request(SoapRequest& request, SoapResponse& response) override;

 private:
  std::unique_ptr<Http::HttpClient> httpClient;
};

}  // namespace KELib::Soap

#endif
