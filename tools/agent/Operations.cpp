// SPDX-License-Identifier: MIT
#include "tools/agent/Operations.h"

#include <algorithm>
#include <thread>
#include <utility>

#include "tools/agent/ClassLinks.h"
#include "tools/agent/ClassOperations.h"
#include "tools/agent/Errors.h"
#include "tools/agent/InstanceOperations.h"
#include "tools/agent/LinkOperations.h"
#include "tools/agent/PullOperations.h"
#include "tools/agent/QueryOperations.h"
#include "tools/agent/StoredOperations.h"
#include "tools/common/Schema.h"

namespace tools::agent {
namespace {

using Answerer = Content (*)(const Call& call);

// What an operation reads of the inventory: nothing, what it answers as it is sent, or a portion,
// which would be lost with its answer. What is changed must not be changed twice either.
enum Reading { NOTHING, INVENTORY, PORTIONS, CHANGES = PORTIONS };

// Who answers an operation.
struct OperationRow {
  const char* name;
  Answerer ofInventory;  // about the daemon's objects, or without instances
  Answerer ofStored;     // about what is stored; null: as the one before
  Answerer ofClass;      // where "ObjectName" is a class
  Reading reading;
  const char* parameters[13];  // null after the last
};

// An operation that answers all of what a function selects, in a shape.
template <Select select, Shape shape>
Content All(const Call& call) {
  return select(call, shape, nullptr);
}

template <PullKind kind, Select ofInventory, Select ofStored>
Content Open(const Call& call) {
  return OpenSelected(call, kind, ofInventory, ofStored);
}

template <PullKind kind>
Content Pull(const Call& call) {
  return agent::Pull(call, kind);
}

// A method of a class: nothing has one. What it is called on must be there.
template <Answerer get>
Content InvokeMethod(const Call& call) {
  const Request& request = call.request;
  const bool isClass = request.Find("ClassName") != nullptr;
  if (isClass) {
    RequestedClass(request);
  } else {
    get(call);
  }
  throw OperationError(Status::MethodNotFound, "there is no method " + request.method);
}

// The daemon's objects are changed by nobody.
Content RefuseChange(const Call& call) {
  throw OperationError(Status::NotSupported,
                       call.request.method + " is not supported in " + call.request.nameSpace);
}

constexpr OperationRow EXTRINSIC = {
    "",        InvokeMethod<GetInstance>,    InvokeMethod<GetStored>, nullptr,
    INVENTORY, {"ClassName", "InstanceName"}};

constexpr OperationRow OPERATIONS[] = {
    {"EnumerateInstances",
     All<SelectInstances, Shape::NamedInstance>,
     All<SelectStored, Shape::NamedInstance>,
     nullptr,
     INVENTORY,
     {"ClassName", "LocalOnly", "DeepInheritance", "IncludeQualifiers", "IncludeClassOrigin",
      "PropertyList"}},
    {"EnumerateInstanceNames",
     All<SelectInstances, Shape::Name>,
     All<SelectStored, Shape::Name>,
     nullptr,
     INVENTORY,
     {"ClassName"}},
    {"GetInstance",
     GetInstance,
     GetStored,
     nullptr,
     INVENTORY,
     {"InstanceName", "LocalOnly", "IncludeQualifiers", "IncludeClassOrigin", "PropertyList"}},
    {"Associators",
     All<SelectPartners, Shape::ObjectWithPath>,
     All<SelectStoredPartners, Shape::ObjectWithPath>,
     ClassAssociators,
     INVENTORY,
     {"ObjectName", "AssocClass", "ResultClass", "Role", "ResultRole", "IncludeQualifiers",
      "IncludeClassOrigin", "PropertyList"}},
    {"AssociatorNames",
     All<SelectPartners, Shape::ObjectPath>,
     All<SelectStoredPartners, Shape::ObjectPath>,
     ClassAssociatorNames,
     INVENTORY,
     {"ObjectName", "AssocClass", "ResultClass", "Role", "ResultRole"}},
    {"References",
     All<SelectLinks, Shape::ObjectWithPath>,
     All<SelectStoredLinks, Shape::ObjectWithPath>,
     ClassReferences,
     INVENTORY,
     {"ObjectName", "ResultClass", "Role", "IncludeQualifiers", "IncludeClassOrigin",
      "PropertyList"}},
    {"ReferenceNames",
     All<SelectLinks, Shape::ObjectPath>,
     All<SelectStoredLinks, Shape::ObjectPath>,
     ClassReferenceNames,
     INVENTORY,
     {"ObjectName", "ResultClass", "Role"}},
    {"CreateInstance", RefuseChange, CreateStored, nullptr, CHANGES, {"NewInstance"}},
    {"ModifyInstance",
     RefuseChange,
     ModifyStored,
     nullptr,
     CHANGES,
     {"ModifiedInstance", "IncludeQualifiers", "PropertyList"}},
    {"DeleteInstance", RefuseChange, DeleteStored, nullptr, CHANGES, {"InstanceName"}},
    {"ExecQuery", ExecQuery, ExecStoredQuery, nullptr, INVENTORY, {"QueryLanguage", "Query"}},
    {"OpenEnumerateInstances",
     Open<PullKind::WithPath, SelectInstances, SelectStored>,
     nullptr,
     nullptr,
     PORTIONS,
     {"ClassName", "DeepInheritance", "IncludeClassOrigin", "PropertyList", "FilterQueryLanguage",
      "FilterQuery", "OperationTimeout", "ContinueOnError", "MaxObjectCount"}},
    {"OpenEnumerateInstancePaths",
     Open<PullKind::Paths, SelectInstances, SelectStored>,
     nullptr,
     nullptr,
     PORTIONS,
     {"ClassName", "FilterQueryLanguage", "FilterQuery", "OperationTimeout", "ContinueOnError",
      "MaxObjectCount"}},
    {"OpenAssociatorInstances",
     Open<PullKind::WithPath, SelectPartners, SelectStoredPartners>,
     nullptr,
     nullptr,
     PORTIONS,
     {"InstanceName", "AssocClass", "ResultClass", "Role", "ResultRole", "IncludeClassOrigin",
      "PropertyList", "FilterQueryLanguage", "FilterQuery", "OperationTimeout", "ContinueOnError",
      "MaxObjectCount"}},
    {"OpenAssociatorInstancePaths",
     Open<PullKind::Paths, SelectPartners, SelectStoredPartners>,
     nullptr,
     nullptr,
     PORTIONS,
     {"InstanceName", "AssocClass", "ResultClass", "Role", "ResultRole", "FilterQueryLanguage",
      "FilterQuery", "OperationTimeout", "ContinueOnError", "MaxObjectCount"}},
    {"OpenReferenceInstances",
     Open<PullKind::WithPath, SelectLinks, SelectStoredLinks>,
     nullptr,
     nullptr,
     PORTIONS,
     {"InstanceName", "ResultClass", "Role", "IncludeClassOrigin", "PropertyList",
      "FilterQueryLanguage", "FilterQuery", "OperationTimeout", "ContinueOnError",
      "MaxObjectCount"}},
    {"OpenReferenceInstancePaths",
     Open<PullKind::Paths, SelectLinks, SelectStoredLinks>,
     nullptr,
     nullptr,
     PORTIONS,
     {"InstanceName", "ResultClass", "Role", "FilterQueryLanguage", "FilterQuery",
      "OperationTimeout", "ContinueOnError", "MaxObjectCount"}},
    {"OpenQueryInstances",
     OpenQuery,
     nullptr,
     nullptr,
     PORTIONS,
     {"FilterQueryLanguage", "FilterQuery", "ReturnQueryResultClass", "OperationTimeout",
      "ContinueOnError", "MaxObjectCount"}},
    {"PullInstancesWithPath",
     Pull<PullKind::WithPath>,
     nullptr,
     nullptr,
     PORTIONS,
     {"EnumerationContext", "MaxObjectCount"}},
    {"PullInstancePaths",
     Pull<PullKind::Paths>,
     nullptr,
     nullptr,
     PORTIONS,
     {"EnumerationContext", "MaxObjectCount"}},
    {"PullInstances",
     Pull<PullKind::Instances>,
     nullptr,
     nullptr,
     PORTIONS,
     {"EnumerationContext", "MaxObjectCount"}},
    {"CloseEnumeration", CloseEnumeration, nullptr, nullptr, NOTHING, {"EnumerationContext"}},
    {"EnumerateClasses",
     EnumerateClasses,
     nullptr,
     nullptr,
     NOTHING,
     {"ClassName", "DeepInheritance", "LocalOnly", "IncludeQualifiers", "IncludeClassOrigin"}},
    {"EnumerateClassNames",
     EnumerateClassNames,
     nullptr,
     nullptr,
     NOTHING,
     {"ClassName", "DeepInheritance"}},
    {"GetClass",
     GetClass,
     nullptr,
     nullptr,
     NOTHING,
     {"ClassName", "LocalOnly", "IncludeQualifiers", "IncludeClassOrigin", "PropertyList"}},
    {"EnumerateQualifiers", EnumerateQualifiers, nullptr, nullptr, NOTHING, {}},
    {"GetQualifier", GetQualifier, nullptr, nullptr, NOTHING, {"QualifierName"}},
    {"EnumerateNamespaces", EnumerateNamespaces, nullptr, nullptr, NOTHING, {}},
};

constexpr const char* FLAGS[] = {"LocalOnly", "DeepInheritance", "IncludeQualifiers",
                                 "IncludeClassOrigin"};

bool Takes(const OperationRow& row, const std::string& parameter) {
  for (const char* const* name = row.parameters; *name; ++name) {
    if (SameName(*name, parameter)) return true;
  }
  return false;
}

// A client that has misspelt a filter would take an answer without it for the filtered one.
void CheckParameters(const OperationRow& row, const Request& request) {
  for (const Parameter& parameter : request.parameters) {
    const bool isFirst = request.Find(parameter.name) == &parameter;
    if (isFirst && Takes(row, parameter.name)) continue;
    throw OperationError(
        Status::InvalidParameter,
        parameter.name + (isFirst ? " is no parameter of " : " comes twice in ") + row.name);
  }
  for (const char* flag : FLAGS) request.Flag(flag, false);
  request.List("PropertyList");
}

void CheckNamespace(const Request& request) {
  if (request.space) return;
  throw OperationError(Status::InvalidNamespace, "there is no namespace " + request.nameSpace);
}

// Null for an operation that is not served.
const OperationRow* Find(const Request& request) {
  if (request.isExtrinsic) return &EXTRINSIC;
  for (const OperationRow& row : OPERATIONS) {
    if (request.method == row.name) return &row;
  }
  return nullptr;
}

Answerer AnswererOf(const OperationRow& row, const Request& request) {
  const Parameter* object = row.ofClass ? request.Find("ObjectName") : nullptr;
  if (object && object->kind == Parameter::Kind::Class) return row.ofClass;
  const bool isStored = row.ofStored && request.space && request.space->space == INTEROP;
  return isStored ? row.ofStored : row.ofInventory;
}

Content Dispatch(const Call& call) {
  const OperationRow* row = Find(call.request);
  if (!row) {
    throw OperationError(Status::NotSupported, call.request.method + " is not supported");
  }
  if (row->ofInventory != EnumerateNamespaces) CheckNamespace(call.request);
  CheckParameters(*row, call.request);
  return AnswererOf(*row, call.request)(call);
}

Content Error(const OperationError& error) {
  const std::string code = std::to_string(static_cast<int>(error.status));
  return Content::OfResponse(
      [code, text = std::string(StatusName(error.status)) + ": " + error.what()](XmlWriter& out) {
        out.Empty("ERROR", {{"CODE", code}, {"DESCRIPTION", text}});
      });
}

// What the method returns, or the error.
std::unique_ptr<Reply> Begin(const Call& call) {
  const auto make = [&](Content content) {
    return std::make_unique<Reply>(call.request, std::move(content), call.turns);
  };
  try {
    return make(Dispatch(call));
  } catch (const OperationError& error) {
    auto reply = make(Error(error));
    reply->SetOutcome(StatusName(error.status));
    return reply;
  }
}

}  // namespace

Operations::Operations(const InventoryGate& inventoryGate, StoredSource& storedSource,
                       const Limits& limits)
    : gate(inventoryGate),
      stored(storedSource),
      patience(limits.time),
      backlog(limits.unsentBytes),
      turns(std::clamp(std::thread::hardware_concurrency(), 2u, 4u)) {}

const char* Operations::NameOf(const Request& request) {
  const OperationRow* row = Find(request);
  return !row ? "unknown" : row == &EXTRINSIC ? "InvokeMethod" : row->name;
}

void Operations::Await(const Request& request) const {
  const OperationRow* row = Find(request);
  if (!row || row->reading == NOTHING || !request.space) return;
  const bool isOfInventory = AnswererOf(*row, request) == row->ofInventory;
  if (isOfInventory && request.space->space == SYSTEMS) gate.AwaitOpen();
}

std::unique_ptr<Reply> Operations::Answer(const Request& request, const std::string& host,
                                          std::size_t client) const {
  const auto deadline = Backlog::Clock::now() + patience;
  const Call call{request, gate, stored, host, client, turns, pulls};
  const OperationRow* row = Find(request);
  return row && row->reading == PORTIONS ? Portion(call, deadline) : Whole(call, deadline);
}

// Waits for room without what its first try has made.
std::unique_ptr<Reply> Operations::Whole(const Call& call, Backlog::Clock::time_point end) const {
  std::size_t bytes = 1;  // not known yet
  while (backlog.AwaitRoom(bytes, end)) {
    auto reply = Begin(call);
    reply->Next();
    bytes = reply->Bytes();
    if (auto share = backlog.Reserve(bytes)) {
      reply->Keep(std::move(share));
      return reply;
    }
  }
  throw NotReady("too many answers wait to be taken");
}

// There must be room before it is made: it cannot be made twice.
std::unique_ptr<Reply> Operations::Portion(const Call& call, Backlog::Clock::time_point end) const {
  while (backlog.AwaitRoom(PORTION_ROOM, end)) {
    auto share = backlog.Reserve(PORTION_ROOM);
    if (!share) continue;
    auto reply = Begin(call);
    reply->Next();
    share->Resize(reply->Bytes());
    reply->Keep(std::move(share));
    return reply;
  }
  throw NotReady("too many answers wait to be taken");
}

}  // namespace tools::agent
