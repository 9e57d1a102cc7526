// SPDX-License-Identifier: MIT
#include "soap/SoapHttpClientImpl.h"

#include "http/ConnectionInfo.h"
#include "http/HeaderInfoImpl.h"
#include "http/HttpConstants.h"
#include "http/HttpRequest.h"
#include "http/HttpResponse.h"
#include "http/HttpService.h"
#include "soap/SoapConstants.h"
#include "soap/SoapException.h"
#include "soap/SoapMessage.h"

namespace KELib::Soap {

namespace {

Http::HeaderInfoImpl* HeadersOf(Http::ConnectionInfo& ci) {
  return dynamic_cast<Http::HeaderInfoImpl*>(ci.GetHeaderInfo());
}

unsigned int CountHeaders(Http::ConnectionInfo& ci) {
  const Http::HeaderInfoImpl* headers = HeadersOf(ci);
  return headers != nullptr ? headers->Count() : 0;
}

}  // namespace

SoapClient::~SoapClient() = default;

SoapClient* CreateSoapClient(Http::ConnectionInfo* ci) {
  auto client = std::make_unique<SoapHttpClientImpl>();
  client->Init(ci);
  return client.release();
}

void InitSoapService() {
  Http::GetHttpService();
}

void ReleaseSoapService() {
  Http::ReleaseHttpService();
}

SoapHttpClientImpl::SoapHttpClientImpl() = default;
SoapHttpClientImpl::~SoapHttpClientImpl() = default;

void SoapHttpClientImpl::Init(Http::ConnectionInfo* ci) {
  const unsigned int given = CountHeaders(*ci);
  try {
    ci->AddHeader(Http::HEADER_USER_AGENT, HEADER_VALUE_USERAGENT_MPXA);
    ci->AddHeader(Http::HEADER_CACHE_CONTROL, Http::HEADER_VALUE_NO_CACHE);
    ci->AddHeader(Http::HEADER_CONTENT_TYPE, Http::HEADER_VALUE_TEXTXML);
    ci->AddHeader(HEADER_SOAPACTION, Http::HEADER_VALUE_NONE);
    httpClient.reset(Http::GetHttpService()->CreateHttpClient(ci));
  } catch (...) {
    if (auto* headers = HeadersOf(*ci)) headers->CutTo(given);
    throw;
  }
}

void SoapHttpClientImpl::SetProxy(KEString& host, KEString& port) {
  if (!httpClient) return;
  Http::ConnectionInfo* ci = httpClient->GetConnectionInfo();
  ci->SetProxyHost(host);
  ci->SetProxyPort(port);
  ci->EnableSettingProxy();
}

void SoapHttpClientImpl::UnsetProxy() {
  if (!httpClient) return;
  KEString none;
  Http::ConnectionInfo* ci = httpClient->GetConnectionInfo();
  ci->SetProxyHost(none);
  ci->SetProxyPort(none);
  ci->DisableSettingProxy();
}

void SoapHttpClientImpl::Request(SoapRequest& request, SoapResponse& response) {
  if (!httpClient) throw SoapException(ERR_NO_RESPONSE);
  Http::HttpRequest httpRequest;
  EncloseMessageContent(request, httpRequest);
  Http::HttpResponse httpResponse;
  httpClient->Post(&httpRequest, &httpResponse);
  ThrowExceptionOnRequestError(httpResponse);
  ExtractMessageContent(httpResponse.GetContent(), response);
  ThrowExceptionIfFault(response);
}

}  // namespace KELib::Soap
