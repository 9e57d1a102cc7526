// SPDX-License-Identifier: MIT
#include "datasync/ServerCalls.h"

#include "datasync/DataSyncConstants.h"
#include "datasync/FilterSpec.h"
#include "datasync/SyncState.h"
#include "foundation/KEConstants.h"
#include "foundation/KEException.h"
#include "foundation/Logger.h"
#include "http/HandleWait.h"
#include "instance/CacheConversion.h"
#include "service/call/KEMethodImpl.h"
#include "service/call/ServiceConstants.h"
#include "xml/KEXmlBuffer.h"
#include "xml/KEXmlReader.h"

namespace KE::Service {

namespace {

using KE::Stub::ManagedObjectReference;
using KELib::KEString;
using KELib::KEVector;
using KELib::Logging::Log;
using KELib::Logging::LOG_LEVEL_VERBOSE;

// How long a library's own call waits for a free connection.
constexpr int kHandleWaitMs = 2000;

}  // namespace

ServerCalls::ServerCalls(KEMethod* invoker, ManagedObjectReference* collector, SyncState& syncState,
                         const std::atomic<bool>& stop)
    : method(invoker), propertyCollector(collector), state(syncState), stopRequested(stop) {}

void ServerCalls::WriteCreateFilter(ManagedObjectReference* root, KEVector<KEString>& list,
                                    KELib::Xml::KEXmlBuffer& body) {
  body.StartAddElementTag(MethodCreateFilter);
  body.AddNamespace(nullptr, targetNamespace);
  body.AddElementTagAttrAndValue(ThisMorefTag, MorefTypeAttr, propertyCollector->type.Cstr(),
                                 propertyCollector->value.Cstr());
  CreateFilterSpec(root, list, body);
  body.AddElementTagAndValue(PartialUpdatesTag, KELib::STR_BOOLEAN_TRUE);
  body.EndAddElementTag(MethodCreateFilter);
}

std::unique_ptr<ManagedObjectReference> ServerCalls::CreateFilter(KELib::Xml::KEXmlBuffer& body) {
  KEString response;
  {
    const KELib::Http::HandleWait limits(kHandleWaitMs, &stopRequested);
    method->Invoke(targetNamespace, MethodCreateFilter, body, response);
  }
  KELib::Xml::KEXmlReader reader(response, false, 0);
  ManagedObjectReference* parsed = nullptr;
  auto reference = std::make_unique<ManagedObjectReference>();
  parsed = reference.get();
  KE::Instance::ConvertManagedObjectReference(ReturnVal, reader, parsed);
  if (reference->value.Empty()) {
    throw KELib::SystemException("CreateFilter answered without a filter.");
  }
  return reference;
}

void ServerCalls::DestroyFilter(ManagedObjectReference& filter) {
  try {
    const KELib::Http::HandleWait limits(kHandleWaitMs, &stopRequested);
    KEString response;
    method->Invoke(targetNamespace, MethodDestroyPropertyFilter, filter.type.Cstr(),
                   filter.value.Cstr(), response);
  } catch (const KELib::Exception& e) {
    Log(nullptr, LOG_LEVEL_VERBOSE, "Exception Destroying PropFilter : %s", e.What());
  } catch (const std::exception& e) {
    Log(nullptr, LOG_LEVEL_VERBOSE, "Exception Destroying PropFilter : %s", e.what());
  }
}

bool ServerCalls::WaitForUpdates(const KEString& version, int answerLimit, bool& silent,
                                 KEString& response) {
  const KELib::Http::HandleWait limits(kHandleWaitMs, &stopRequested, 0, answerLimit);
  struct WaitOut {
    WaitOut(SyncState& state, const KELib::Http::HandleWait& scope, bool& wasSilent)
        : flag(state.waitOut), limits(scope), silent(wasSilent) {
      flag = true;
    }
    ~WaitOut() {
      flag = false;
      silent = !limits.Answered();
    }
    std::atomic<bool>& flag;
    const KELib::Http::HandleWait& limits;
    bool& silent;
  } const waitOut(state, limits, silent);
  if (stopRequested) return false;
  method->Invoke(targetNamespace, MethodWaitForUpdates, propertyCollector->type.Cstr(),
                 propertyCollector->value.Cstr(), VersionTag, version.Cstr(), response);
  return true;
}

bool ServerCalls::CancelWait(bool tellFailure) {
  try {
    KEString response;
    method->Invoke(targetNamespace, MethodCancelWaitForUpdates, propertyCollector->type.Cstr(),
                   propertyCollector->value.Cstr(), response);
    return true;
  } catch (const KELib::Exception& e) {
    if (tellFailure) {
      Log(nullptr, LOG_LEVEL_VERBOSE, "Exception Cancelling data sync : %s", e.What());
    }
  } catch (const std::exception& e) {
    if (tellFailure) {
      Log(nullptr, LOG_LEVEL_VERBOSE, "Exception Cancelling data sync : %s", e.what());
    }
  }
  return false;
}

bool ServerCalls::CancelTimedOutWait() {
  const KELib::Http::HandleWait limits(kHandleWaitMs, &stopRequested);
  return CancelWait(true);
}

void ServerCalls::CancelWaitToStop() {
  constexpr int kCancelLimitMs = 500;
  const KELib::Http::HandleWait limits(kCancelLimitMs, nullptr, kCancelLimitMs);
  if (!CancelWait(!cancelFailureTold)) cancelFailureTold = true;
}

void ServerCalls::InvokeMethod(const KEString& name, const ManagedObjectReference& target,
                               KEString& response) {
  const KELib::Http::HandleWait limits(kHandleWaitMs, &stopRequested);
  method->Invoke(targetNamespace, name.Cstr(), target.type.Cstr(), target.value.Cstr(), response);
}

void ServerCalls::InterruptTransfers(bool interrupt) {
  auto* invoker = dynamic_cast<KEMethodImpl*>(method);
  if (invoker == nullptr) return;
  if (interrupt) {
    invoker->Interrupt();
  } else {
    invoker->Resume();
  }
}

}  // namespace KE::Service
