// SPDX-License-Identifier: MIT
#include "http/HttpClient.h"

#include <algorithm>
#include <chrono>

#include "foundation/KEException.h"
#include "http/CallLimits.h"
#include "http/HttpException.h"
#include "http/HttpTransfer.h"

namespace KELib {
namespace Http {

HttpClient::~HttpClient() = default;

HttpClientImpl::HttpClientImpl() = default;

HttpClientImpl::~HttpClientImpl() {
  if (session != nullptr) session->Release();
}

void HttpClientImpl::Init(ConnectionInfo* info) {
  auto created = std::make_unique<HttpSessionImpl>(info);
  try {
    created->Init();
  } catch (...) {
    created->ReleaseConnectionInfo();  // the caller's again
    throw;
  }
  session = std::move(created);
}

void HttpClientImpl::SaveSession() {
  throw NotImplementedException("NotImplementedException");
}

void HttpClientImpl::Get(HttpRequest*, HttpResponse*) {
  throw NotImplementedException("NotImplementedException");
}

bool HttpClientImpl::IsConnected() {
  return session != nullptr && session->IsValid();
}

ConnectionInfo* HttpClientImpl::GetConnectionInfo() {
  return session != nullptr ? session->GetConnectionInfo() : nullptr;
}

void HttpClientImpl::Post(HttpRequest* request, HttpResponse* response) {
  HttpHandleRef ref;
  TakeHandle(ref);
  HttpTransfer transfer(*ref.handle, *session->GetPool(), *session->GetConnectionInfo());
  transfer.Run(*request, *response);
}

// Waits in short slices, since nobody wakes the pool when a stop flag is set.
void HttpClientImpl::TakeHandle(HttpHandleRef& ref) {
  using Clock = std::chrono::steady_clock;
  using std::chrono::milliseconds;
  constexpr milliseconds kSlice(50);
  if (!IsConnected()) throw HttpException("Unable to connect. Busy.");
  session->GetHandle(ref);
  if (const CallLimits* limits = CallLimits::Current()) {
    const auto deadline = Clock::now() + milliseconds(limits->HandleWait());
    for (auto now = Clock::now(); ref.handle == nullptr && now < deadline && !limits->Stopped();
         now = Clock::now()) {
      const auto left = std::chrono::duration_cast<milliseconds>(deadline - now) + milliseconds(1);
      session->GetPool()->WaitForFreeHandle(static_cast<int>(std::min(left, kSlice).count()));
      session->GetHandle(ref);
    }
  }
  if (ref.handle == nullptr) throw HttpException("Unable to connect. Busy.");
}

}  // namespace Http
}  // namespace KELib
