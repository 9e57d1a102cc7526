// SPDX-License-Identifier: MIT
#include "service/call/KEMethodImpl.h"

#include <atomic>
#include <cstring>
#include <memory>
#include <typeinfo>

#include "foundation/KEException.h"
#include "foundation/Logger.h"
#include "http/CallTrace.h"
#include "service/call/KESoapClientImpl.h"
#include "service/call/ServiceConstants.h"
#include "soap/ReplyLength.h"
#include "soap/SoapException.h"
#include "soap/SoapRequest.h"
#include "soap/SoapResponse.h"
#include "xml/KEXmlBuffer.h"

namespace KE::Service {

namespace {

using KELib::KEString;
using KELib::Xml::KEXmlBuffer;

const char* const kNotImplemented = "NotImplementedException";

// Set for the life of the process.
std::atomic<bool> privilegesRevoked{false};

template <typename Kind>
[[noreturn]] void ThrowCopy(const char* text) {
  KEString copy(text);
  throw Kind(copy.Str(), copy.Length());
}

struct FaultRule {
  const char* typeName;
  void (*throwAs)(const char* text);
  bool revokes;
};

// The names end in "Fault" while the SOAP layer hands type names on without that ending, so that no
// fault of a server matches: each one surfaces as a SystemException that carries the bare type
// name, and nothing revokes the privileges. Callers rely on it: a login that was refused once must
// not end every later call of the process.
const FaultRule kFaultRules[] = {
    {"InvalidStateFault", ThrowCopy<KE::InvalidStateException>, false},
    {"InvalidPowerStateFault", ThrowCopy<KE::InvalidPowerStateException>, false},
    {"RequestCanceledFault", ThrowCopy<KE::RequestCanceledException>, false},
    {"NotAuthenticatedFault", ThrowCopy<KELib::NotAuthenticatedException>, true},
    {"NoPermissionFault", ThrowCopy<KELib::NoPermissionException>, true},
};

// A fault without a type is thrown without a text, so what the server said would be lost.
void LogUntypedFault(const KELib::Soap::SoapFaultInfo& info) {
  KELib::Logging::Log(nullptr, KELib::Logging::LOG_LEVEL_VERBOSE,
                      "The server's fault has no type : %s", info.GetFaultString());
}

[[noreturn]] void ThrowMapped(const KELib::Soap::SoapException& e) {
  const KELib::Soap::SoapFaultInfo* info = e.GetFaultInfo();
  KELib::Http::CallTrace* trace = KELib::Http::CallTrace::Current();
  if (trace != nullptr) trace->isFault = info != nullptr;
  if (info != nullptr && info->GetSoapFaultDetail() != nullptr) {
    const char* typeName = info->GetSoapFaultDetail()->GetFaultTypeName();
    for (const FaultRule& rule : kFaultRules) {
      if (std::strcmp(typeName, rule.typeName) != 0) continue;
      if (rule.revokes) privilegesRevoked = true;
      rule.throwAs(e.What());
    }
  }
  if (info != nullptr && *e.What() == '\0') LogUntypedFault(*info);
  ThrowCopy<KELib::SystemException>(e.What());
}

void LogFailedCall(const char* method, KEXmlBuffer& body, const char* message) {
  KEString text("Unable to Invoke : ");
  text.Append(method);
  text.Append("\n Content : \n");
  text.Append(body.Str());
  text.Append("\n - Exception : ");
  text.Append(message);
  text.Append("\n");
  KELib::Logging::Log(nullptr, KELib::Logging::LOG_LEVEL_VERBOSE, "%s", text.Cstr());
}

void StartBody(const char* ns, const char* method, const char* thisType, const char* thisValue,
               KEXmlBuffer& body) {
  body.StartAddElementTag(method);
  body.AddNamespace(nullptr, ns);
  body.AddElementTagAttrAndValue(ThisMorefTag, MorefTypeAttr, thisType, thisValue);
}

}  // namespace

// --- the interface -------------------------------------------------------------------------------

KEMethod::~KEMethod() = default;

void KEMethod::Init(KESoapClient*) {
  throw KELib::NotImplementedException(kNotImplemented);
}

void KEMethod::Invoke(const char*, const char*, KEXmlBuffer&, KEString&) {
  throw KELib::NotImplementedException(kNotImplemented);
}

void KEMethod::Invoke(const char*, const char*, const char*, const char*, KEString&) {
  throw KELib::NotImplementedException(kNotImplemented);
}

void KEMethod::Invoke(const char*, const char*, const char*, const char*, const char*, const char*,
                      KEString&) {
  throw KELib::NotImplementedException(kNotImplemented);
}

KEMethod* CreateMethod(KESoapClient* client) {
  auto method = std::make_unique<KEMethodImpl>();
  method->Init(client);
  return method.release();
}

// --- the implementation --------------------------------------------------------------------------

KEMethodImpl::KEMethodImpl() = default;
KEMethodImpl::~KEMethodImpl() = default;

void KEMethodImpl::Init(KESoapClient* soapClient) {
  if (client == nullptr) client = soapClient;
}

void KEMethodImpl::Invoke(const char* ns, const char* method, KEXmlBuffer& body, KEString& result) {
  if (privilegesRevoked) throw KELib::NoPermissionException(NotAuthMsg);
  if (client == nullptr) throw KELib::SystemException("Unable to Invoke - no client found");
  try {
    Send(ns, method, body, result);
  } catch (const KELib::Soap::SoapException& e) {
    ThrowMapped(e);
  } catch (const KELib::RequestTimedOutException&) {
    throw;
  } catch (const KELib::RequestFailedException&) {
    throw;
  } catch (const KELib::Exception& e) {
    LogFailedCall(method, body, e.What());
    ThrowCopy<KELib::Exception>(e.What());
  }
}

void KEMethodImpl::Send(const char* ns, const char* method, KEXmlBuffer& body, KEString& result) {
  KELib::Soap::SoapRequest request(ns, method, body);
  KELib::Soap::SoapResponse response;
  client->Request(request, response);
  if (typeid(*client) != typeid(KESoapClientImpl)) KELib::Soap::ReplyLength::Forget();
  result.Transfer(response.GetContent());
}

void KEMethodImpl::Invoke(const char* ns, const char* method, const char* thisType,
                          const char* thisValue, KEString& result) {
  KEXmlBuffer body;
  StartBody(ns, method, thisType, thisValue, body);
  body.EndAddElementTag(method);
  Invoke(ns, method, body, result);
}

void KEMethodImpl::Invoke(const char* ns, const char* method, const char* thisType,
                          const char* thisValue, const char* argName, const char* argValue,
                          KEString& result) {
  KEXmlBuffer body;
  StartBody(ns, method, thisType, thisValue, body);
  body.AddElementTagAndValue(argName, argValue);
  body.EndAddElementTag(method);
  Invoke(ns, method, body, result);
}

}  // namespace KE::Service
