// SPDX-License-Identifier: MIT
//
// A managed object of the simulated host and its properties. Values are XML texts, as they go over
// the wire. Plain data, guarded by the inventory's mutex.
#ifndef KECPP_SIMULATOR_OBJECT_H
#define KECPP_SIMULATOR_OBJECT_H

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace sim {

// Counts the changes of the inventory.
using Version = std::uint64_t;

struct Property {
  std::string_view name;        // a literal, as are the attributes
  std::string xml;              // the content of the "val" element
  std::string_view attributes;  // of the "val" element, with a leading blank
  bool listsMembers = false;    // the value is the list of the object's members; `xml` is not used
  Version changedAt = 0;
};

struct Object {
  std::string id, type;
  std::vector<Property> properties;
  std::vector<const Object*> members;  // a folder's entities, a host's machines
  Version changedAt = 0;               // of the property that changed last

  // Null without such a property.
  const Property* Find(std::string_view name) const {
    for (const Property& property : properties) {
      if (property.name == name) return &property;
    }
    return nullptr;
  }
  Property* Find(std::string_view name) {
    return const_cast<Property*>(std::as_const(*this).Find(name));
  }

  // The value of a property; empty without such a property.
  std::string Text(std::string_view name) const {
    const Property* property = Find(name);
    return property != nullptr ? property->xml : std::string();
  }
};

}  // namespace sim

#endif
