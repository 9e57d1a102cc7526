// SPDX-License-Identifier: MIT
//
// What every operation gets and returns, and the questions that several of them ask of a request.
// All functions throw OperationError for a request that cannot be answered.
#ifndef KECPP_TOOLS_AGENT_CALL_H
#define KECPP_TOOLS_AGENT_CALL_H

#include <optional>
#include <string>
#include <vector>

#include "tools/agent/Content.h"
#include "tools/agent/Errors.h"
#include "tools/agent/InventoryGate.h"
#include "tools/agent/PullSessions.h"
#include "tools/agent/Queries.h"
#include "tools/agent/Request.h"
#include "tools/agent/StoredInstances.h"
#include "tools/agent/Turns.h"
#include "tools/common/Schema.h"

namespace tools::agent {

struct Call {
  const Request& request;
  const InventoryGate& gate;
  StoredSource& stored;
  const std::string& host;
  std::size_t client;  // who asks: the same for the same credentials
  Turns& turns;        // to be taken while many objects or links are copied
  PullSessions& pulls;
};

// A class of the request's namespace. `status` is the error when there is none of that name.
const ClassRow& KnownClass(const Request& request, const std::string& name,
                           Status status = Status::InvalidClass);

// The class that "ClassName" names, which must be given and known.
const ClassRow& RequestedClass(const Request& request);

// The class that a filter names; null when the parameter is absent or empty.
const ClassRow* FilterClass(const Request& request, const char* parameter);

// The properties of `type` that are in the request's "PropertyList", which may be absent.
std::vector<ClassProperty> WantedProperties(const Request& request, const ClassRow& type);

// Of these, the ones that an enumeration of class `asked` shows of an instance of `type`. Without
// deep inheritance the instances of derived classes are answered as well, but with the properties
// of the class that was asked for only.
std::vector<ClassProperty> InstanceProperties(const Request& request, const ClassRow& asked,
                                              const ClassRow& type);

// The parameter that must be there and an instance name.
const Parameter& InstanceParameter(const Request& request, const char* name);

// The objects that the instance name in a parameter can mean: one, or, when it names a class that
// others derive from, one of each of these.
std::vector<ObjectName> NamedObjects(const Request& request, const char* parameter);

// Whether the instance name in a parameter is a link's, and then the link that it names: one of
// that class or of one that derives from it.
bool NamesLink(const Request& request, const char* parameter);
Link NamedLink(const Call& call, const char* parameter);

// The classes of these objects.
std::vector<const ClassRow*> TypesOf(const std::vector<ObjectName>& objects);

// True when the keys fit the class; its key's value is then in `value`. A client may leave out
// "CreationClassName" and, since there is a single key then, the key's name as well.
bool KeysFit(const ClassRow& type, const std::vector<KeyBinding>& keys, std::string& value);

// The inventory, while the daemon is connected. Throws OperationError when all of `types` are such
// that the daemon does not show to this account.
InventoryGate::Visit EnterInventory(const Call& call, const std::vector<const ClassRow*>& types);

}  // namespace tools::agent

#endif
