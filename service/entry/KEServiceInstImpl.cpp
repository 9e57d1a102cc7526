// SPDX-License-Identifier: MIT
#include "service/entry/KEServiceInstImpl.h"

#include "foundation/KEException.h"
#include "foundation/KEMutexGuard.h"
#include "foundation/Logger.h"
#include "http/CallTrace.h"
#include "service/call/KEMethodImpl.h"
#include "service/call/KESoapClientImpl.h"
#include "service/call/ServiceConstants.h"
#include "service/entry/ConnectState.h"
#include "service/entry/KESessionImpl.h"
#include "service/entry/ServiceContent.h"

namespace KE::Service {

using KELib::KEMutexGuard;

const char* const PxaRootFolder = "rootFolder";
const char* const PxaPropColl = "propertyCollector";
const char* const PxaSessionMgr = "sessionManager";

KEServiceInst::~KEServiceInst() = default;

KEServiceInstImpl::KEServiceInstImpl() : mutex(std::make_unique<KELib::KEMutex>()) {}

KEServiceInstImpl::~KEServiceInstImpl() {
  while (!EndSyncsNoLock()) {
    // A thread is still inside: it would use what is destroyed here.
  }
  sessions.Clear();
  method.reset();
  config.reset();
  client.reset();
}

bool KEServiceInstImpl::Init(KELib::KEConfig* source) {
  KEMutexGuard guard(mutex.get());
  if (config != nullptr) return true;
  config.reset(source);
  KELib::Http::CallTrace trace;
  try {
    if (!MakeClient()) return false;
    const ConnectState::Attempt attempt;
    return SetupService() && CreateSessionNoLock() != nullptr;
  } catch (const KELib::Exception& e) {
    ConnectState::Get().Note(ConnectStep::firstCall, e.What());
    KELib::Logging::Log(nullptr, KELib::Logging::LOG_LEVEL_VERBOSE,
                        "Unable to initialize service instance : %s", e.What());
    return false;
  }
}

bool KEServiceInstImpl::SetupClient() {
  return MakeClient() && SetupService();
}

bool KEServiceInstImpl::MakeClient() {
  client.reset(CreateClient(config.get()));
  if (client == nullptr) {
    const auto* trace = KELib::Http::CallTrace::Current();
    ConnectState::Get().Note(ConnectStep::makingClient, trace ? trace->before.Cstr() : "");
    return false;
  }
  method.reset(CreateMethod(client.get()));
  return true;
}

bool KEServiceInstImpl::SetupService() {
  KEMutexGuard guard(mutex.get());
  if (method == nullptr) {
    KELib::Logging::Log(nullptr, KELib::Logging::LOG_LEVEL_VERBOSE,
                        "Unable to SetupService - no method found");
    return false;
  }
  if (!serviceContent.Empty()) return true;
  try {
    method->Invoke(targetNamespace, methodName, svcInst, svcInst, serviceContent);
    if (serviceContent.Empty()) {
      ConnectState::Get().Note(ConnectStep::firstCall, "the service content is empty");
    }
  } catch (const KELib::Exception& e) {
    ConnectState::Get().Note(ConnectStep::firstCall, e.What());
    KELib::Logging::Log(nullptr, KELib::Logging::LOG_LEVEL_VERBOSE,
                        "Unable to retrieve the service content : %s", e.What());
    serviceContent = "";
  }
  return !serviceContent.Empty();
}

KESession* KEServiceInstImpl::CreateSession() {
  KEMutexGuard guard(mutex.get());
  return CreateSessionNoLock();
}

KESession* KEServiceInstImpl::CreateSessionNoLock() {
  if (serviceContent.Empty()) return nullptr;
  std::unique_ptr<KESession> session(
      KE::Service::CreateSession(config.get(), method.get(), serviceContent));
  if (session == nullptr) return nullptr;
  try {
    sessions.Add(session.get());
  } catch (...) {
    if (static_cast<KESessionImpl&>(*session).IsLoggedIn()) session->Logout();
    throw;
  }
  return session.release();
}

KESession* KEServiceInstImpl::GetCurrentSession() {
  KEMutexGuard guard(mutex.get());
  return GetCurrentSessionNoLock();
}

KESession* KEServiceInstImpl::GetCurrentSessionNoLock() {
  if (sessions.Count() == 0) return nullptr;
  if (next >= sessions.Count()) next = 0;
  return sessions[next];
}

KESession* KEServiceInstImpl::GetSession() {
  KEMutexGuard guard(mutex.get());
  KESession* session = GetCurrentSessionNoLock();
  if (session != nullptr) ++next;
  return session;
}

bool KEServiceInstImpl::IsInitialized() {
  KEMutexGuard guard(mutex.get());
  return !serviceContent.Empty();
}

KE::Stub::ManagedObjectReference* KEServiceInstImpl::GetReference(const char* name) {
  KEMutexGuard guard(mutex.get());
  if (name == nullptr) {
    KELib::KEString type(svcInst), value(svcInst);
    return KE::Stub::CreateManagedObjectReference(type, value);
  }
  return ServiceContent(serviceContent).Reference(name).release();
}

KELib::KEConfig* KEServiceInstImpl::GetConfig() {
  return config.get();
}

KEMethod* KEServiceInstImpl::GetMethod() {
  return method.get();
}

// --- stopping ------------------------------------------------------------------------------------

void KEServiceInstImpl::Stop() {
  KEMutexGuard guard(mutex.get());
  for (unsigned int i = 0; i < sessions.Count(); ++i) {
    auto* session = static_cast<KESessionImpl*>(sessions[i]);
    if (session->IsLoggedIn()) session->Logout();
    if (!session->EndSync()) return;  // a thread still uses the session: it must stay
    session->Cleanup();
  }
  sessions.Clear();
}

bool KEServiceInstImpl::EndSyncs() {
  KEMutexGuard guard(mutex.get());
  return EndSyncsNoLock();
}

bool KEServiceInstImpl::EndSyncsNoLock() {
  for (unsigned int i = 0; i < sessions.Count(); ++i) {
    if (!static_cast<KESessionImpl*>(sessions[i])->EndSync()) return false;
  }
  return true;
}

}  // namespace KE::Service
