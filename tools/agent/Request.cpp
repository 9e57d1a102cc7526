// SPDX-License-Identifier: MIT
#include "tools/agent/Request.h"

#include <cstring>
#include <pugixml.hpp>
#include <utility>

#include "tools/agent/Errors.h"
#include "tools/common/Schema.h"

namespace tools::agent {
namespace {

using pugi::xml_node;

constexpr int BAD_REQUEST = 400;
constexpr int NOT_IMPLEMENTED = 501;

[[noreturn]] void Invalid() {
  throw MessageError(BAD_REQUEST, "request-not-loosely-valid");
}

// A second one is another request, or another value, which must not be passed over in silence.
xml_node Child(xml_node parent, const char* name) {
  xml_node child = parent.child(name);
  if (!child || child.next_sibling(name)) Invalid();
  return child;
}

std::string Attribute(xml_node node, const char* name) {
  pugi::xml_attribute attribute = node.attribute(name);
  if (!attribute) Invalid();
  return attribute.value();
}

// Comments and CDATA sections cut a text into pieces.
std::string TextOf(xml_node node) {
  std::string text;
  for (xml_node piece : node.children()) text += piece.value();
  return text;
}

bool Is(xml_node node, const char* name) {
  return std::strcmp(node.name(), name) == 0;
}

// A major version that is not ours may mean anything.
void CheckVersion(const std::string& version, const char* major, const char* cimError) {
  if (version.compare(0, 2, major) != 0) throw MessageError(NOT_IMPLEMENTED, cimError);
}

std::string ReadNamespace(xml_node path) {
  std::string name;
  for (xml_node part : path.children("NAMESPACE")) {
    if (!name.empty()) name += '/';
    name += Attribute(part, "NAME");
  }
  return name;
}

// The instance's name inside a reference, perhaps inside a path.
xml_node ReferencedName(xml_node reference) {
  xml_node name = reference.first_child();
  if (Is(name, "INSTANCEPATH") || Is(name, "LOCALINSTANCEPATH")) name = name.child("INSTANCENAME");
  if (!Is(name, "INSTANCENAME")) Invalid();
  return name;
}

KeyBinding ReadValueKey(const std::string& name, xml_node holder) {
  KeyBinding key;
  key.name = name;
  key.value = TextOf(Child(holder, "KEYVALUE"));
  return key;
}

KeyBinding ReadReferenceKey(const std::string& name, xml_node reference) {
  const xml_node target = ReferencedName(reference);
  KeyBinding key;
  key.name = name;
  key.isReference = true;
  key.referenceClass = Attribute(target, "CLASSNAME");
  for (xml_node binding : target.children("KEYBINDING")) {
    key.referenceKeys.push_back(ReadValueKey(Attribute(binding, "NAME"), binding));
  }
  return key;
}

// The keys of an INSTANCENAME. A class with a single key may give its value without a name.
std::vector<KeyBinding> ReadKeys(xml_node instanceName) {
  std::vector<KeyBinding> keys;
  for (xml_node binding : instanceName.children("KEYBINDING")) {
    const std::string name = Attribute(binding, "NAME");
    const xml_node reference = binding.child("VALUE.REFERENCE");
    keys.push_back(reference ? ReadReferenceKey(name, reference) : ReadValueKey(name, binding));
  }
  if (keys.empty() && instanceName.child("KEYVALUE")) {
    keys.push_back(ReadValueKey("", instanceName));
  }
  return keys;
}

std::vector<std::string> ReadArray(xml_node array) {
  std::vector<std::string> values;
  for (xml_node value : array.children("VALUE")) values.push_back(TextOf(value));
  return values;
}

GivenProperty ReadProperty(xml_node property) {
  GivenProperty given;
  given.name = Attribute(property, "NAME");
  given.isArray = Is(property, "PROPERTY.ARRAY");
  if (Is(property, "PROPERTY.REFERENCE")) {
    const xml_node reference = property.child("VALUE.REFERENCE");
    given.isNull = !reference;
    if (reference) given.reference = ReadReferenceKey(given.name, reference);
    return given;
  }
  given.type = Attribute(property, "TYPE");
  const xml_node value = property.child(given.isArray ? "VALUE.ARRAY" : "VALUE");
  given.isNull = !value;
  if (value) given.values = given.isArray ? ReadArray(value) : std::vector{TextOf(value)};
  return given;
}

void ReadObject(xml_node instance, Parameter& parameter) {
  parameter.kind = Parameter::Kind::Object;
  parameter.value = Attribute(instance, "CLASSNAME");
  for (xml_node child : instance.children()) {
    const bool isProperty = std::strncmp(child.name(), "PROPERTY", 8) == 0;
    if (isProperty) parameter.properties.push_back(ReadProperty(child));
  }
}

Parameter ReadParameter(std::string name, xml_node content) {
  Parameter parameter;
  parameter.name = std::move(name);
  if (!content) return parameter;
  if (Is(content, "VALUE")) {
    parameter.kind = Parameter::Kind::Value;
    parameter.value = TextOf(content);
  } else if (Is(content, "VALUE.ARRAY")) {
    parameter.kind = Parameter::Kind::Array;
    parameter.values = ReadArray(content);
  } else if (Is(content, "CLASSNAME")) {
    parameter.kind = Parameter::Kind::Class;
    parameter.value = Attribute(content, "NAME");
  } else if (Is(content, "INSTANCENAME")) {
    parameter.kind = Parameter::Kind::Instance;
    parameter.value = Attribute(content, "CLASSNAME");
    parameter.keys = ReadKeys(content);
  } else if (Is(content, "INSTANCE")) {
    ReadObject(content, parameter);
  } else if (Is(content, "VALUE.NAMEDINSTANCE") && content.child("INSTANCE")) {
    ReadObject(content.child("INSTANCE"), parameter);
    parameter.keys = ReadKeys(Child(content, "INSTANCENAME"));
  }  // values that only unserved operations take are passed over
  return parameter;
}

void ReadSpace(xml_node holder, Request& request) {
  request.nameSpace = ReadNamespace(Child(holder, "LOCALNAMESPACEPATH"));
  request.space = FindNamespace(request.nameSpace);
}

// What a method is called on.
void ReadCallee(xml_node call, Request& request) {
  const bool isClass = call.child("LOCALCLASSPATH");
  const xml_node path = Child(call, isClass ? "LOCALCLASSPATH" : "LOCALINSTANCEPATH");
  ReadSpace(path, request);
  const xml_node callee = Child(path, isClass ? "CLASSNAME" : "INSTANCENAME");
  request.parameters.push_back(ReadParameter(isClass ? "ClassName" : "InstanceName", callee));
}

void ReadCall(xml_node message, Request& request) {
  if (message.child("MULTIREQ")) {
    throw MessageError(NOT_IMPLEMENTED, "multiple-requests-unsupported");
  }
  const xml_node simple = Child(message, "SIMPLEREQ");
  request.isExtrinsic = !simple.child("IMETHODCALL");
  const xml_node call = Child(simple, request.isExtrinsic ? "METHODCALL" : "IMETHODCALL");
  request.method = Attribute(call, "NAME");
  if (request.isExtrinsic) return ReadCallee(call, request);
  ReadSpace(call, request);
  for (xml_node parameter : call.children("IPARAMVALUE")) {
    request.parameters.push_back(
        ReadParameter(Attribute(parameter, "NAME"), parameter.first_child()));
  }
}

[[noreturn]] void WrongKind(std::string_view name) {
  throw OperationError(Status::InvalidParameter, std::string(name) + " is of the wrong kind");
}

}  // namespace

Request ParseRequest(std::string_view body) {
  pugi::xml_document document;
  // As a fragment, so that content before and after the root is seen.
  constexpr unsigned OPTIONS = pugi::parse_default | pugi::parse_fragment;
  if (!document.load_buffer(body.data(), body.size(), OPTIONS) || !document.document_element() ||
      document.first_child().next_sibling()) {
    throw MessageError(BAD_REQUEST, "request-not-well-formed");
  }
  const xml_node cim = Child(document, "CIM");
  CheckVersion(Attribute(cim, "CIMVERSION"), "2.", "unsupported-cim-version");
  CheckVersion(Attribute(cim, "DTDVERSION"), "2.", "unsupported-dtd-version");
  const xml_node message = Child(cim, "MESSAGE");
  Request request;
  request.messageId = Attribute(message, "ID");
  request.protocolVersion = Attribute(message, "PROTOCOLVERSION");
  CheckVersion(request.protocolVersion, "1.", "unsupported-protocol-version");
  ReadCall(message, request);
  return request;
}

const Parameter* Request::Find(std::string_view name) const {
  for (const Parameter& parameter : parameters) {
    if (SameName(parameter.name, name)) return &parameter;
  }
  return nullptr;
}

bool Request::Flag(std::string_view name, bool otherwise) const {
  const Parameter* parameter = Find(name);
  if (!parameter || parameter->kind == Parameter::Kind::Null) return otherwise;
  if (parameter->kind != Parameter::Kind::Value) WrongKind(name);
  if (SameName(parameter->value, "true")) return true;
  if (SameName(parameter->value, "false")) return false;
  WrongKind(name);
}

std::string Request::Text(std::string_view name) const {
  const Parameter* parameter = Find(name);
  if (!parameter || parameter->kind == Parameter::Kind::Null) return {};
  if (parameter->kind != Parameter::Kind::Value && parameter->kind != Parameter::Kind::Class) {
    WrongKind(name);
  }
  return parameter->value;
}

std::optional<std::vector<std::string>> Request::List(std::string_view name) const {
  const Parameter* parameter = Find(name);
  if (!parameter || parameter->kind == Parameter::Kind::Null) return {};
  if (parameter->kind != Parameter::Kind::Array) WrongKind(name);
  return parameter->values;
}

}  // namespace tools::agent
