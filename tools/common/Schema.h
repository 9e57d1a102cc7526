// SPDX-License-Identifier: MIT
//
// The one table of classes: their properties, types and keys, the ends of associations, and where
// in an object each value is read. The agent serves it and writes the MOF file from it;
// the lists of kecpp-inventory (Kinds.h) are made of its properties.
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

enum class CimType { String, UInt16, Reference };

// Appends a value of an object, which is of the class that the row belongs to or of one that
// derives from it. The text is the view's own; in a list each item is followed by a NUL. False, and
// nothing appended, when the object has no such value.
using ReadValue = bool (*)(const ObjectView& object, std::string& out);

struct PropertyRow {
  const char* name;
  CimType type;
  bool isArray;
  bool isKey;
  ReadValue read;         // null for references
  const char* reference;  // the class that a reference leads to, else null
  const char* description;
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
  std::optional<kecpp::Kind> kind;  // of its instances, where these are objects
  // Of a concrete association, the keys of what an object is linked to, as a list: of the results
  // for an object at the origin, and the other way round.
  ReadValue results;
  ReadValue origins;
};

// A property as a class has it, its own or inherited.
struct ClassProperty {
  const PropertyRow* row;
  const ClassRow* origin;  // the class that declared it first
  bool isOwn;              // declared or overridden by the class itself
};

// Every class, parents before children.
std::vector<const ClassRow*> AllClasses();

// Null when there is no such class.
const ClassRow* FindClass(std::string_view name);

bool DerivesFrom(const ClassRow& type, const ClassRow& ancestor);  // a class derives from itself

// The classes with instances that are, or derive from, `type`.
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
constexpr const char* NAMESPACE_NAME = "root/cimv2";

}  // namespace tools

#endif
