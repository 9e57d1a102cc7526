// SPDX-License-Identifier: MIT
#include "agent/cimxml/Operations.h"

#include "agent/cimxml/ClassOperations.h"
#include "agent/cimxml/Errors.h"
#include "agent/cimxml/InstanceOperations.h"
#include "agent/cimxml/LinkOperations.h"
#include "agent/cimxml/Schema.h"

namespace cimxml {
namespace {

struct OperationRow {
  const char* name;
  void (*answer)(const Call& call);
};

constexpr OperationRow OPERATIONS[] = {
    {"EnumerateInstances", EnumerateInstances},
    {"EnumerateInstanceNames", EnumerateInstanceNames},
    {"GetInstance", GetInstance},
    {"Associators", Associators},
    {"AssociatorNames", AssociatorNames},
    {"References", References},
    {"ReferenceNames", ReferenceNames},
    {"EnumerateClasses", EnumerateClasses},
    {"EnumerateClassNames", EnumerateClassNames},
    {"GetClass", GetClass},
    {"EnumerateNamespaces", EnumerateNamespaces},
};

void CheckNamespace(const Request& request) {
  if (SameName(request.nameSpace, NAMESPACE_NAME)) return;
  throw OperationError(Status::InvalidNamespace, "there is no namespace " + request.nameSpace);
}

void Dispatch(const Call& call) {
  if (!call.request.isExtrinsic) {
    for (const OperationRow& row : OPERATIONS) {
      if (call.request.method != row.name) continue;
      if (row.answer != EnumerateNamespaces) CheckNamespace(call.request);
      return row.answer(call);
    }
  }
  throw OperationError(Status::NotSupported, call.request.method + " is not supported");
}

const char* StatusName(Status status) {
  switch (status) {
    case Status::AccessDenied:
      return "CIM_ERR_ACCESS_DENIED";
    case Status::InvalidNamespace:
      return "CIM_ERR_INVALID_NAMESPACE";
    case Status::InvalidParameter:
      return "CIM_ERR_INVALID_PARAMETER";
    case Status::InvalidClass:
      return "CIM_ERR_INVALID_CLASS";
    case Status::NotFound:
      return "CIM_ERR_NOT_FOUND";
    case Status::NotSupported:
      return "CIM_ERR_NOT_SUPPORTED";
    default:
      return "CIM_ERR_FAILED";
  }
}

// The content of the method's response: what it returns, or the error.
std::string Content(CacheGate& gate, const std::string& host, const Request& request) {
  XmlWriter out;
  try {
    out.Open("IRETURNVALUE");
    Dispatch({request, gate, host, out});
    out.Close("IRETURNVALUE");
    return out.Take();
  } catch (const OperationError& error) {
    XmlWriter failure;
    failure.Empty("ERROR",
                  {{"CODE", std::to_string(static_cast<int>(error.status))},
                   {"DESCRIPTION", std::string(StatusName(error.status)) + ": " + error.what()}});
    return failure.Take();
  }
}

}  // namespace

Operations::Operations(CacheGate& cacheGate) : gate(cacheGate) {}

std::string Operations::Answer(const Request& request, const std::string& host) const {
  const char* response = request.isExtrinsic ? "METHODRESPONSE" : "IMETHODRESPONSE";
  XmlWriter head;
  head.Open("CIM", {{"CIMVERSION", "2.0"}, {"DTDVERSION", "2.0"}});
  head.Open("MESSAGE", {{"ID", request.messageId}, {"PROTOCOLVERSION", request.protocolVersion}});
  head.Open("SIMPLERSP");
  head.Open(response, {{"NAME", request.method}});
  XmlWriter tail;
  tail.Close(response);
  tail.Close("SIMPLERSP");
  tail.Close("MESSAGE");
  tail.Close("CIM");
  std::string reply = "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n" + head.Take();
  reply += Content(gate, host, request);
  return reply += tail.Take() + "\n";
}

}  // namespace cimxml
