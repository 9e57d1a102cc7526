// SPDX-License-Identifier: MIT
#include "http/HttpClient.h"

#include <algorithm>
#include <chrono>

#include "foundation/KEException.h"
#include "http/HandleWait.h"
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
  if (IsConnected()) session->GetHandle(ref);
  const HandleWait* patience = HandleWait::Current();
  if (ref.handle == nullptr && IsConnected() && patience != nullptr) {
    const auto deadline = Clock::now() + milliseconds(patience->Milliseconds());
    for (auto now = Clock::now(); ref.handle == nullptr && now < deadline && !patience->Stopped();
         now = Clock::now()) {
      const auto left = std::chrono::duration_cast<milliseconds>(deadline - now) + milliseconds(1);
      session->GetPool()->WaitForFreeHandle(static_cast<int>(std::min(left, kSlice).count()));
      session->GetHandle(ref);
    }
  }
  if (ref.handle == nullptr) throw HttpException("Unable to connect. Busy.");
}

void HttpClientImpl::Interrupt() {
  if (session != nullptr) session->Interrupt();
}

void HttpClientImpl::Resume() {
  if (session != nullptr) session->Resume();
}

}  // namespace Http
}  // namespace KELib
