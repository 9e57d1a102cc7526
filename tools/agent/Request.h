// SPDX-License-Identifier: MIT
//
// A CIM-XML request as plain values.
//
// Thread safety: none. Nothing here refers to the text that it was read from.
#ifndef KECPP_TOOLS_AGENT_REQUEST_H
#define KECPP_TOOLS_AGENT_REQUEST_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/agent/Namespaces.h"

namespace tools::agent {

// A key of an instance's name. The value of a reference is the name of another instance, whose keys
// are no references themselves.
struct KeyBinding {
  std::string name;
  std::string value;
  bool isReference = false;
  std::string referenceClass;
  std::vector<KeyBinding> referenceKeys;
};

// A property that a client gives an instance.
struct GivenProperty {
  std::string name;
  std::string type;  // as the client says it; empty for a reference
  bool isNull = true;
  bool isArray = false;
  std::vector<std::string> values;  // one unless it is an array
  KeyBinding reference;             // where it leads to, when it is one and not null
};

struct Parameter {
  // An Instance is the name of one; an Object is one with its properties, and perhaps its name.
  enum class Kind { Null, Value, Array, Class, Instance, Object };

  std::string name;
  Kind kind = Kind::Null;
  std::string value;                // a Value's text, or the class's name
  std::vector<std::string> values;  // an Array's
  // An Instance's or an Object's; none of them named "" unless it is the only one.
  std::vector<KeyBinding> keys;
  std::vector<GivenProperty> properties;  // an Object's
};

struct Request {
  std::string messageId;
  std::string protocolVersion;
  std::string nameSpace;             // "root/cimv2"
  const Namespace* space = nullptr;  // the one of that name; null when there is none
  std::string method;
  // A method of a class. Its parameters are not read; what it is called on is the only one here,
  // "ClassName" or "InstanceName".
  bool isExtrinsic = false;
  std::vector<Parameter> parameters;

  // Null when there is no parameter of that name, compared without letter case.
  const Parameter* Find(std::string_view name) const;

  // A boolean parameter; `otherwise` when it is absent. Throws OperationError when it is neither.
  bool Flag(std::string_view name, bool otherwise) const;

  // The texts of a Value, of a Class's name; empty when it is absent or null. Throws OperationError
  // when it is of another kind.
  std::string Text(std::string_view name) const;

  // A list of names; nothing when it is absent or null, which is not the same as an empty one.
  std::optional<std::vector<std::string>> List(std::string_view name) const;
};

// Reads a message. Throws MessageError for what is no XML, no CIM-XML or a kind of message that is
// not served. Linear in the length; nesting costs no stack.
Request ParseRequest(std::string_view body);

}  // namespace tools::agent

#endif
