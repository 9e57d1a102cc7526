// SPDX-License-Identifier: MIT
#include "http/HttpSession.h"

namespace KELib {
namespace Http {

HttpSession::~HttpSession() = default;

HttpSessionImpl::HttpSessionImpl(ConnectionInfo* info) : connectionInfo(info) {}

HttpSessionImpl::~HttpSessionImpl() = default;

void HttpSessionImpl::Init() {
  if (pool == nullptr) pool = std::make_unique<HttpConnectionPool>();
  pool->Init();
}

void HttpSessionImpl::Release() {
  pool.reset();
}

void HttpSessionImpl::GetHandle(HttpHandleRef& ref) {
  if (pool != nullptr) pool->GetHandle(connectionInfo.get(), ref);
}

}  // namespace Http
}  // namespace KELib
