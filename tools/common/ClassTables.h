// SPDX-License-Identifier: MIT
//
// The rows of the table of classes (Schema.h), and how a row is written.
//
// Thread safety: constant.
#ifndef KECPP_TOOLS_COMMON_CLASSTABLES_H
#define KECPP_TOOLS_COMMON_CLASSTABLES_H

#include <cstddef>

#include "tools/common/Schema.h"

namespace tools {

// Parents before children.
struct ClassTable {
  const ClassRow* rows;
  std::size_t count;
};

// What the daemon's objects are.
ClassTable SystemClasses();

// What the agent tells of itself. It uses classes of the other table.
ClassTable InteropClasses();

// The indications of changes, and how clients subscribe to them. It uses classes of both.
ClassTable IndicationClasses();

constexpr PropertyRow Key(const char* name, ReadValue read, const char* description) {
  return {name, CimType::String, false, true, read, nullptr, description};
}
constexpr PropertyRow Text(const char* name, ReadValue read, const char* description) {
  return {name, CimType::String, false, false, read, nullptr, description};
}
constexpr PropertyRow Value(const char* name, CimType type, ReadValue read,
                            const char* description) {
  return {name, type, false, false, read, nullptr, description};
}
constexpr PropertyRow List(const char* name, CimType type, ReadValue read,
                           const char* description) {
  return {name, type, true, false, read, nullptr, description};
}
constexpr PropertyRow Enumeration(const char* name, const NamedValue* values, ReadValue read,
                                  const char* description) {
  return {name, CimType::UInt16, false, false, read, nullptr, description, values};
}
constexpr PropertyRow Enumerations(const char* name, const NamedValue* values, ReadValue read,
                                   const char* description) {
  return {name, CimType::UInt16, true, false, read, nullptr, description, values};
}
constexpr PropertyRow End(const char* role, const char* type, const char* description) {
  return {role, CimType::Reference, false, true, nullptr, type, description};
}
constexpr PropertyRow Required(PropertyRow row) {
  row.isRequired = true;
  return row;
}
constexpr PropertyRow Writable(PropertyRow row) {
  row.isWritable = true;
  return row;
}

constexpr PropertyRow Embedded(PropertyRow row) {
  row.isEmbedded = true;
  return row;
}

// The properties of a class: those of an array, or none.
struct Properties {
  const PropertyRow* rows = nullptr;
  std::size_t count = 0;

  constexpr Properties() = default;
  template <std::size_t size>
  constexpr Properties(const PropertyRow (&array)[size]) : rows(array), count(size) {}
};

// A class and an association without instances of the daemon's; `spaces`: the namespaces that have
// them.
constexpr ClassRow Class(const char* name, const char* parent, Properties properties,
                         const char* description, unsigned spaces, bool isAbstract = true) {
  return {name,    parent,      isAbstract, false,   properties.rows, properties.count,
          nullptr, description, {},         nullptr, nullptr,         spaces};
}

constexpr ClassRow Association(const char* name, const char* parent, Properties properties,
                               const char* description, unsigned spaces, bool isAbstract) {
  return {name,    parent,      isAbstract, true,    properties.rows, properties.count,
          nullptr, description, {},         nullptr, nullptr,         spaces};
}

// Those of the namespace "interop" alone.
constexpr ClassRow InteropClass(const char* name, const char* parent, Properties properties,
                                const char* description, bool isAbstract = false) {
  return Class(name, parent, properties, description, INTEROP, isAbstract);
}
constexpr ClassRow InteropAssociation(const char* name, const char* parent, Properties properties,
                                      const char* description, bool isAbstract = false) {
  return Association(name, parent, properties, description, INTEROP, isAbstract);
}

}  // namespace tools

#endif
