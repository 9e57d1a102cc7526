// SPDX-License-Identifier: MIT
#include "http/HttpService.h"

#include <curl/curl.h>

#include "foundation/KEMutexGuard.h"
#include "http/HttpConstants.h"
#include "http/HttpException.h"

namespace KELib {
namespace Http {

HttpServiceImpl* HttpServiceImpl::_inst = nullptr;
const bool HttpServiceImpl::createdAtLoad = HttpServiceImpl::CreateAtLoad();

HttpService::~HttpService() = default;

KEMutex& HttpServiceImpl::InstanceMutex() {
  static KEMutex* const mutex = new KEMutex;
  return *mutex;
}

HttpServiceImpl::HttpServiceImpl() : mutex(std::make_unique<KEMutex>()) {}

HttpServiceImpl::~HttpServiceImpl() {
  Release();
}

// While the library is being loaded no exception may leave; GetInstance() tries again.
bool HttpServiceImpl::CreateAtLoad() {
  try {
    KEMutexGuard guard(&InstanceMutex());
    if (_inst == nullptr) _inst = new HttpServiceImpl;
  } catch (...) {
    return false;
  }
  return true;
}

void HttpServiceImpl::Init() {
  KEMutexGuard guard(mutex.get());
  if (initialized) return;
  // libcurl's failures are positive numbers and show when the first handle is made.
  if (static_cast<int>(curl_global_init(CURL_GLOBAL_ALL)) < 0) {
    throw HttpException("Error Initializing HttpService");
  }
  initialized = true;
}

void HttpServiceImpl::Release() {
  KEMutexGuard guard(mutex.get());
  if (!initialized) return;
  curl_global_cleanup();
  initialized = false;
}

HttpServiceImpl* HttpServiceImpl::GetInstance() {
  KEMutexGuard guard(&InstanceMutex());
  if (_inst == nullptr) _inst = new HttpServiceImpl;
  _inst->Init();
  return _inst;
}

void HttpServiceImpl::ReleaseInstance() {
  KEMutexGuard guard(&InstanceMutex());
  const std::unique_ptr<HttpServiceImpl> last(_inst);
  _inst = nullptr;
}

HttpClient* HttpServiceImpl::CreateHttpClient(ConnectionInfo* info) {
  if (info->IsSecureConnection() && info->GetSSLInfo() == nullptr) {
    throw HttpException(ERR_NO_SSL_INFO);
  }
  auto client = std::make_unique<HttpClientImpl>();
  client->Init(info);
  return client.release();
}

HttpService* GetHttpService() {
  return HttpServiceImpl::GetInstance();
}

void ReleaseHttpService() {
  HttpServiceImpl::ReleaseInstance();
}

}  // namespace Http
}  // namespace KELib
