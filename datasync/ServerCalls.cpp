// SPDX-License-Identifier: MIT
#include "datasync/ServerCalls.h"

#include <typeinfo>

#include "datasync/DataSyncConstants.h"
#include "datasync/FilterWriter.h"
#include "datasync/SyncState.h"
#include "foundation/KEConstants.h"
#include "foundation/KEException.h"
#include "foundation/Logger.h"
#include "http/CallLimits.h"
#include "instance/CacheConversion.h"
#include "service/call/KEMethodImpl.h"
#include "service/call/ServiceConstants.h"
#include "soap/ReplyLength.h"
#include "xml/KEXmlBuffer.h"
#include "xml/KEXmlReader.h"

namespace KE::Service {

namespace {

using KE::Stub::ManagedObjectReference;
using KELib::KEString;
using KELib::Http::CallLimits;
using KELib::Logging::Log;
using KELib::Logging::LOG_LEVEL_VERBOSE;

}  // namespace

ServerCalls::ServerCalls(KEMethod* invoker, ManagedObjectReference* collector, SyncState& syncState,
                         const std::atomic<bool>& stop)
    : method(invoker), propertyCollector(collector), state(syncState), stopRequested(stop) {}

void ServerCalls::WriteCreateFilter(const ManagedObjectReference& root, const PropertyList& list,
                                    KELib::Xml::KEXmlBuffer& body) {
  body.StartAddElementTag(MethodCreateFilter);
  body.AddNamespace(nullptr, targetNamespace);
  body.AddElementTagAttrAndValue(ThisMorefTag, MorefTypeAttr, propertyCollector->type.Cstr(),
                                 propertyCollector->value.Cstr());
  WriteFilterSpec(root, list, body);
  body.AddElementTagAndValue(PartialUpdatesTag, KELib::STR_BOOLEAN_TRUE);
  body.EndAddElementTag(MethodCreateFilter);
}

std::unique_ptr<ManagedObjectReference> ServerCalls::CreateFilter(KELib::Xml::KEXmlBuffer& body) {
  KEString response;
  {
    const CallLimits limits(&interrupter, &stopRequested);
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
    const CallLimits limits(&interrupter, &stopRequested);
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
                                 KELib::Xml::KEXmlReader& answer) {
  CallLimits limits(&interrupter, &stopRequested);
  limits.SetAnswerLimit(answerLimit);
  struct WaitOut {
    WaitOut(SyncState& state, const CallLimits& scope, bool& wasSilent)
        : flag(state.waitOut), limits(scope), silent(wasSilent) {
      flag = true;
    }
    ~WaitOut() {
      flag = false;
      silent = !limits.Answered();
    }
    std::atomic<bool>& flag;
    const CallLimits& limits;
    bool& silent;
  } const waitOut(state, limits, silent);
  if (stopRequested) return false;
  const KELib::Soap::ReplyLength length;
  KEString response;
  method->Invoke(targetNamespace, MethodWaitForUpdates, propertyCollector->type.Cstr(),
                 propertyCollector->value.Cstr(), VersionTag, version.Cstr(), response);
  // An agent's own method object may have changed what it was given.
  if (typeid(*method) != typeid(KEMethodImpl)) KELib::Soap::ReplyLength::Forget();
  answer.SetInputOfLength(response, length.Of(response));
  return true;
}

bool ServerCalls::SendCancel(bool tellFailure) {
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

bool ServerCalls::CancelWait() {
  CallLimits limits(&interrupter);
  limits.SetHandleWait(0);
  return SendCancel(true);
}

bool ServerCalls::CancelTimedOutWait() {
  const CallLimits limits(&interrupter, &stopRequested);
  return SendCancel(true);
}

void ServerCalls::CancelWaitToStop() {
  constexpr int kCancelLimitMs = 500;
  CallLimits limits(&interrupter);
  limits.SetHandleWait(kCancelLimitMs);
  limits.SetTransferLimit(kCancelLimitMs);
  if (!SendCancel(!cancelFailureTold)) cancelFailureTold = true;
}

void ServerCalls::ForgetStop() {
  cancelFailureTold = false;
  interrupter.Resume();
}

void ServerCalls::InvokeMethod(const KEString& name, const ManagedObjectReference& target,
                               KEString& response) {
  const CallLimits limits(&interrupter, &stopRequested);
  method->Invoke(targetNamespace, name.Cstr(), target.type.Cstr(), target.value.Cstr(), response);
}

}  // namespace KE::Service
