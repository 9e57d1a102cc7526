// SPDX-License-Identifier: MIT
//
// The libcurl options of a connection's settings.
#include <curl/curl.h>

#include <cstdlib>

#include "foundation/StringUtil.h"
#include "http/ConnectionInfo.h"
#include "http/EasyOption.h"
#include "http/HeaderInfoImpl.h"
#include "http/HttpConstants.h"
#include "http/HttpException.h"
#include "http/HttpHandle.h"
#include "http/HttpTransfer.h"
#include "http/Url.h"

namespace KELib {
namespace Http {

namespace {

curl_slist* HeaderLinesOf(ConnectionInfo& info) {
  auto* headers = dynamic_cast<HeaderInfoImpl*>(info.GetHeaderInfo());
  return headers != nullptr ? headers->GetHeaders() : nullptr;
}

long NumberOf(const KEString& port) {
  return StringUtil::IsNumber(port) ? std::strtol(port.Cstr(), nullptr, 10) : 0;
}

// The empty names say "no proxy" and "no exceptions": without them libcurl would obey
// the environment of the process.
void SetProxy(ConnectionInfo& info, void* easy) {
  SetEasyOption(easy, CURLOPT_NOPROXY, "", {ERR_HTTP_CONNECT, "0021"});
  if (!info.CanSetProxy()) {
    SetEasyOption(easy, CURLOPT_PROXY, "", {ERR_HTTP_CONNECT, "0021"});
    return;
  }
  SetEasyOption(easy, CURLOPT_PROXY, info.GetProxyHost().Cstr(), {ERR_HTTP_CONNECT, "0021"});
  SetEasyOption(easy, CURLOPT_PROXYPORT, NumberOf(info.GetProxyPort()), {ERR_HTTP_CONNECT, "0022"});
}

void SetVerbose(ConnectionInfo& info, void* easy) {
  if (!info.IsHttpLogVerbose()) return;
  SetEasyOption(easy, CURLOPT_VERBOSE, 1L, {ERR_HTTP_SETUP, "0023"});
  SetEasyOption(easy, CURLOPT_NOPROGRESS, 0L, {ERR_HTTP_SETUP, "0024"});
}

void SetPosting(void* easy) {
  curl_easy_setopt(easy, CURLOPT_POST, 1L);  // cannot fail; "0027" is kept for it
  if (curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &HttpTransfer::StoreChunk) != CURLE_OK) {
    ThrowHttpException(ERR_HTTP_CONNECT, "0028");
  }
}

void ThrowExceptionIfNotPem(const KEString& type) {
  if (type.Equals(DEFAULT_SSL_CERT_TYPE)) return;
  KEString text("Invalid Certificate type. Expected PEM. Got : ");
  text += type;
  throw InvalidArgumentException(text.Str(), text.Length());
}

}  // namespace

void InitializeHttpPost(ConnectionInfo* info, HttpHandle* handle) {
  ThrowExceptionIfInvalidUrl(info);
  void* easy = handle->handle;
  handle->SetHeaders(HeaderLinesOf(*info));
  SetProxy(*info, easy);
  SetVerbose(*info, easy);
  if (info->IsSessionMaintained()) {
    // An empty name turns cookies on without reading a file.
    SetEasyOption(easy, CURLOPT_COOKIEFILE, "", {ERR_HTTP_CONNECT, "0025"});
  }
  if (!handle->SetTimeout(info->GetTimeout())) ThrowHttpException(ERR_HTTP_CONNECT, "0026");
  SetPosting(easy);
  if (info->IsSecureConnection()) InitializeSSL(info->GetSSLInfo(), handle);
}

void InitializeSSL(SSLInfo* ssl, HttpHandle* handle) {
  if (ssl == nullptr) return;
  void* easy = handle->handle;
  const char* type = ssl->GetCertType().Cstr();
  ThrowExceptionIfNotPem(ssl->GetCertType());
  SetEasyOption(easy, CURLOPT_SSLCERTTYPE, type, {ERR_SSL_INIT, "0030"});
  SetEasyOption(easy, CURLOPT_SSLCERT, ssl->GetCertFile().Cstr(), {ERR_SSL_INIT, "0031"});
  if (!ssl->GetPassPhrase().Empty()) {
    SetEasyOption(easy, CURLOPT_KEYPASSWD, ssl->GetPassPhrase().Cstr(), {ERR_SSL_INIT, "0032"});
  }
  SetEasyOption(easy, CURLOPT_SSLKEYTYPE, type, {ERR_SSL_INIT, "0033"});
  SetEasyOption(easy, CURLOPT_SSLKEY, ssl->GetKeyFile().Cstr(), {ERR_SSL_INIT, "0034"});
  if (!ssl->GetCACertFile().Empty()) {
    SetEasyOption(easy, CURLOPT_CAINFO, ssl->GetCACertFile().Cstr(), {ERR_SSL_INIT, "0035"});
  }
  SetEasyOption(easy, CURLOPT_SSL_VERIFYPEER, 0L, {ERR_SSL_INIT, "0036"});
  SetEasyOption(easy, CURLOPT_SSL_VERIFYHOST, 0L, {ERR_SSL_INIT, "0037"});
}

}  // namespace Http
}  // namespace KELib
