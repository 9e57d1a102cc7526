// SPDX-License-Identifier: MIT
#include "http/HttpHandle.h"

#include <curl/curl.h>

#include <algorithm>

#include "http/CookieStore.h"
#include "http/EasyOption.h"
#include "http/HeaderLines.h"
#include "http/HttpConnectionPool.h"
#include "http/HttpConstants.h"
#include "http/HttpException.h"
#include "http/SocketRegistry.h"

namespace KELib {
namespace Http {

HttpHandle::HttpHandle() = default;

HttpHandle::~HttpHandle() {
  Release();
}

void HttpHandle::Init(void* share) {
  constexpr long kDefaultTimeout = 60;
  if (share == nullptr) ThrowHttpException(ERR_HTTP_SETUP, "0010");
  Release();
  if (sockets == nullptr) sockets = std::make_unique<SocketRegistry>();
  handle = curl_easy_init();
  if (handle == nullptr) ThrowHttpException(ERR_HTTP_SETUP, "0011");
  try {
    SetEasyOption(handle, CURLOPT_SHARE, share, {ERR_HTTP_SETUP, "0012"});
    SetEasyOption(handle, CURLOPT_VERBOSE, 0L, {ERR_HTTP_SETUP, "0013"});
    SetEasyOption(handle, CURLOPT_NOPROGRESS, 1L, {ERR_HTTP_SETUP, "0014"});
    SetEasyOption(handle, CURLOPT_NOSIGNAL, 1L, {ERR_HTTP_SETUP, "0015"});
    if (!SetTimeout(kDefaultTimeout)) ThrowHttpException(ERR_HTTP_SETUP, "0016");
    sockets->Serve(handle);
  } catch (...) {
    Release();
    throw;
  }
}

void HttpHandle::Release() {
  if (handle != nullptr) {
    curl_easy_setopt(handle, CURLOPT_SHARE, static_cast<void*>(nullptr));
    curl_easy_cleanup(handle);
  }
  if (sockets != nullptr) sockets->Transfers().CloseConnections();
  curl_slist_free_all(headers);
  handle = nullptr;
  prepared = false;
  headers = nullptr;
  cookies.reset();
}

void HttpHandle::SetHeaders(curl_slist* lines) {
  curl_slist* copy = CopyHeaderLines(lines);
  const bool copied = copy != nullptr || lines == nullptr;
  // Nothing behind the colon: libcurl then neither sends the header nor waits for "100-continue",
  // which some servers never send, before it sends a large request.
  curl_slist* all = copied ? curl_slist_append(copy, "Expect:") : nullptr;
  if (all == nullptr || curl_easy_setopt(handle, CURLOPT_HTTPHEADER, all) != CURLE_OK) {
    curl_slist_free_all(all != nullptr ? all : copy);
    ThrowHttpException(ERR_HTTP_CONNECT, "0020");
  }
  curl_slist_free_all(headers);
  headers = all;
}

bool HttpHandle::SetTimeout(long long seconds) {
  const long clamped = ClampTimeout(seconds);
  if (curl_easy_setopt(handle, CURLOPT_TIMEOUT, clamped) != CURLE_OK) return false;
  timeout = clamped;
  return true;
}

long ClampTimeout(long long seconds) {
  constexpr long long kLongest = 2147483;  // in milliseconds it still fits into 32 bits
  return static_cast<long>(std::clamp(seconds, 0LL, kLongest));
}

HttpHandleRef::HttpHandleRef(const HttpHandleRef& other) : handle(other.handle), pool(other.pool) {
  if (pool != nullptr) pool->Share(other, *this);
}

HttpHandleRef& HttpHandleRef::operator=(const HttpHandleRef& other) {
  if (this == &other) return *this;
  if (handle != other.handle) GiveBack();
  handle = other.handle;
  pool = other.pool;
  if (pool != nullptr) pool->Share(other, *this);
  return *this;
}

HttpHandleRef::~HttpHandleRef() {
  GiveBack();
}

void HttpHandleRef::Set(HttpConnectionPool* newPool, HttpHandle* newHandle) {
  if (handle != newHandle) GiveBack();
  handle = newHandle;
  pool = newPool;
  if (pool != nullptr) pool->Hold(*this);
}

void HttpHandleRef::GiveBack() {
  if (pool != nullptr) pool->GiveBack(*this);
  handle = nullptr;
  pool = nullptr;
}

}  // namespace Http
}  // namespace KELib
