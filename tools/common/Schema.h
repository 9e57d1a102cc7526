// SPDX-License-Identifier: MIT
//
// The one table of classes: their properties, types, keys and named values, the ends of
// associations, and where in an object each value is read. The agent serves it and writes the MOF
// files from it; the lists of kecpp-inventory (Kinds.h) are made of its properties. The rows are in
// SystemClasses.cpp, InteropClasses.cpp and IndicationClasses.cpp. Classes that are named "CIM_"
// are the standard's (CIM Schema 2.49), with those of their properties that are served.
//
// Class and property names compare without letter case, as CIM has it.
// Thread safety: constant.
#ifndef KECPP_TOOLS_COMMON_SCHEMA_H
#define KECPP_TOOLS_COMMON_SCHEMA_H

#include <kecpp/inventory.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/common/ObjectView.h"

namespace tools {

enum class CimType { String, Boolean, UInt16, UInt32, UInt64, SInt64, DateTime, Reference };

// Where a class is known: among the daemon's objects, or among those that describe the agent. The
// values are bits.
enum Space : unsigned { SYSTEMS = 1, INTEROP = 2, EVERYWHERE = SYSTEMS | INTEROP };

// Appends a value of an object, which is of the class that the row belongs to or of one that
// derives from it. The text is the view's own; in a list each item is followed by a NUL. False, and
// nothing appended, when the object has no such value.
using ReadValue = bool (*)(const ObjectView& object, std::string& out);

// What a value of an enumeration means.
struct NamedValue {
  const char* value;
  const char* name;
};

struct PropertyRow {
  const char* name;
  CimType type;
  bool isArray;
  bool isKey;
  ReadValue read;         // null for references, and in classes without a kind
  const char* reference;  // the class that a reference leads to, else null
  const char* description;
  const NamedValue* values = nullptr;  // of an enumeration; the last one has no name
  bool isRequired = false;
  bool isWritable = false;
  bool isEmbedded = false;  // the text is an instance
};

struct ClassRow {
  const char* name;
  const char* parent;  // null for a root
  bool isAbstract;
  bool isAssociation;  // then its first property is the origin, the second one the result
  const PropertyRow* properties;  // those that it adds or, of the same name, overrides
  std::size_t propertyCount;
  const PropertyRow* key;  // the key besides "CreationClassName"; null where there is none
  const char* description;
  std::optional<kecpp::Kind> kind;  // of its instances, where these are the inventory's objects
  // Of an association of the inventory's objects, the keys of what one is linked to, as a list: of
  // the results for an object at the origin, and the other way round. Null elsewhere.
  ReadValue results;
  ReadValue origins;
  unsigned spaces = SYSTEMS;
  bool isAggregation = false;  // then the origin is the aggregate
  bool isIndication = false;
};

// A property as a class has it, its own or inherited.
struct ClassProperty {
  const PropertyRow* row;
  const ClassRow* origin;  // the class that declared it first
  bool isOwn;              // declared or overridden by the class itself
};

// Every class that is known in one of the spaces, parents before children.
std::vector<const ClassRow*> AllClasses(unsigned spaces = SYSTEMS);

// Null when there is no such class there. O(log classes).
const ClassRow* FindClass(std::string_view name, unsigned spaces = EVERYWHERE);

bool DerivesFrom(const ClassRow& type, const ClassRow& ancestor);  // a class derives from itself

// The classes whose instances the inventory has, that are or derive from `type`.
std::vector<const ClassRow*> ConcreteClasses(const ClassRow& type);

// All properties, inherited ones first.
std::vector<ClassProperty> PropertiesOf(const ClassRow& type);

// The class of a kind's objects.
const ClassRow& ClassOf(kecpp::Kind kind);

// The ends of a concrete association class.
const ClassRow& OriginOf(const ClassRow& assocClass);
const ClassRow& ResultOf(const ClassRow& assocClass);

bool SameName(std::string_view a, std::string_view b);  // without letter case
const char* TypeName(CimType type);                     // as CIM-XML and MOF write it

constexpr const char* CREATION_CLASS_NAME = "CreationClassName";
constexpr const char* NAMESPACE_NAME = "root/cimv2";  // of the daemon's objects

}  // namespace tools

#endif
