// SPDX-License-Identifier: MIT
#include "tools/agent/Call.h"

#include <algorithm>

#include "tools/common/Kinds.h"

namespace tools::agent {
namespace {

[[noreturn]] void InvalidParameter(const std::string& text) {
  throw OperationError(Status::InvalidParameter, text);
}

bool Contains(const std::vector<std::string>& names, const char* name) {
  return std::any_of(names.begin(), names.end(),
                     [name](const std::string& other) { return SameName(other, name); });
}

bool NamesItsKey(const ClassRow& type, const std::vector<KeyBinding>& keys) {
  return std::any_of(keys.begin(), keys.end(), [&](const KeyBinding& key) {
    return key.name.empty() || SameName(key.name, type.key->name);
  });
}

bool IsAuthorization(const ClassRow& type) {
  return GroupOf(type) == Group::authorization;
}

const KeyBinding& EndName(const std::vector<KeyBinding>& keys, const PropertyRow& role) {
  for (const KeyBinding& key : keys) {
    if (key.isReference && SameName(key.name, role.name)) return key;
  }
  InvalidParameter(std::string("no key for ") + role.name);
}

// True when the name can be that of an instance of the end's class; its key is then in `value`.
bool EndFits(const ClassRow& end, const KeyBinding& name, std::string& value) {
  const ClassRow* named = FindClass(name.referenceClass);
  return named && DerivesFrom(end, *named) && KeysFit(end, name.referenceKeys, value);
}

// Nothing when the class has no link of that name.
std::optional<Link> FindLink(const Call& call, const ClassRow& type,
                             const std::vector<KeyBinding>& keys) {
  const KeyBinding& originName = EndName(keys, type.properties[0]);
  const KeyBinding& resultName = EndName(keys, type.properties[1]);
  std::string origin, result;
  if (keys.size() != type.propertyCount || !EndFits(OriginOf(type), originName, origin) ||
      !EndFits(ResultOf(type), resultName, result)) {
    return {};
  }
  Link link{&type, "", ""};
  const auto visit = EnterInventory(call, {&type});
  const bool found = ReadLink(visit.Inventory(), origin, result, link);
  visit.Confirm();
  return found ? std::optional<Link>(link) : std::nullopt;
}

}  // namespace

const ClassRow& KnownClass(const Request& request, const std::string& name, Status status) {
  const ClassRow* type = FindClass(name, request.space->space);
  if (!type) throw OperationError(status, "there is no class " + name);
  return *type;
}

const ClassRow& RequestedClass(const Request& request) {
  const std::string name = request.Text("ClassName");
  if (name.empty()) InvalidParameter("ClassName is missing");
  return KnownClass(request, name);
}

const ClassRow* FilterClass(const Request& request, const char* parameter) {
  const std::string name = request.Text(parameter);
  return name.empty() ? nullptr : &KnownClass(request, name, Status::InvalidParameter);
}

std::vector<ClassProperty> WantedProperties(const Request& request, const ClassRow& type) {
  std::vector<ClassProperty> properties = PropertiesOf(type);
  const auto list = request.List("PropertyList");
  if (!list) return properties;
  const auto unwanted = [&](const ClassProperty& property) {
    return !Contains(*list, property.row->name);
  };
  properties.erase(std::remove_if(properties.begin(), properties.end(), unwanted),
                   properties.end());
  return properties;
}

std::vector<ClassProperty> InstanceProperties(const Request& request, const ClassRow& asked,
                                              const ClassRow& type) {
  std::vector<ClassProperty> columns = WantedProperties(request, type);
  if (request.Flag("DeepInheritance", true)) return columns;
  const auto all = PropertiesOf(asked);
  const auto added = [&](const ClassProperty& column) {
    return std::none_of(all.begin(), all.end(), [&](const ClassProperty& property) {
      return SameName(property.row->name, column.row->name);
    });
  };
  columns.erase(std::remove_if(columns.begin(), columns.end(), added), columns.end());
  return columns;
}

bool KeysFit(const ClassRow& type, const std::vector<KeyBinding>& keys, std::string& value) {
  bool hasKey = false;
  for (const KeyBinding& key : keys) {
    if (SameName(key.name, CREATION_CLASS_NAME)) {
      if (!SameName(key.value, type.name)) return false;
    } else if (key.name.empty() || SameName(key.name, type.key->name)) {
      value = key.value;
      hasKey = true;
    } else {
      return false;
    }
  }
  return hasKey;
}

const Parameter& InstanceParameter(const Request& request, const char* name) {
  const Parameter* parameter = request.Find(name);
  if (!parameter) InvalidParameter(std::string(name) + " is missing");
  if (parameter->kind != Parameter::Kind::Instance) {
    InvalidParameter(std::string(name) + " is no instance name");
  }
  return *parameter;
}

std::vector<ObjectName> NamedObjects(const Request& request, const char* parameter) {
  const Parameter& name = InstanceParameter(request, parameter);
  std::vector<ObjectName> objects;
  bool namesKey = false;
  for (const ClassRow* type : ConcreteClasses(KnownClass(request, name.value))) {
    if (type->isAssociation) continue;
    std::string key;
    if (KeysFit(*type, name.keys, key)) objects.push_back({type, key});
    namesKey = namesKey || NamesItsKey(*type, name.keys);
  }
  if (!namesKey) InvalidParameter("the instance name lacks the key of its class");
  return objects;
}

bool NamesLink(const Request& request, const char* parameter) {
  const Parameter* name = request.Find(parameter);
  const ClassRow* type = name ? FindClass(name->value, SYSTEMS) : nullptr;
  return type && type->isAssociation && name->kind == Parameter::Kind::Instance;
}

Link NamedLink(const Call& call, const char* parameter) {
  const Parameter& name = *call.request.Find(parameter);
  for (const ClassRow* type : ConcreteClasses(*FindClass(name.value))) {
    if (const auto link = FindLink(call, *type, name.keys)) return *link;
  }
  throw OperationError(Status::NotFound, "there is no such instance");
}

std::vector<const ClassRow*> TypesOf(const std::vector<ObjectName>& objects) {
  std::vector<const ClassRow*> types;
  types.reserve(objects.size());
  for (const ObjectName& object : objects) types.push_back(object.type);
  return types;
}

InventoryGate::Visit EnterInventory(const Call& call, const std::vector<const ClassRow*>& types) {
  const auto visit = call.gate.Enter();
  const bool denied = !visit.HasAuthorization() && !types.empty() &&
                      std::all_of(types.begin(), types.end(),
                                  [](const ClassRow* type) { return IsAuthorization(*type); });
  if (!denied) return visit;
  throw OperationError(Status::AccessDenied,
                       "the daemon does not show roles and privileges to this account");
}

}  // namespace tools::agent
