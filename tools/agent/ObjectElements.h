// SPDX-License-Identifier: MIT
//
// Prepares the elements by which instances, links and their names are answered.
#ifndef KECPP_TOOLS_AGENT_OBJECTELEMENTS_H
#define KECPP_TOOLS_AGENT_OBJECTELEMENTS_H

#include <string_view>
#include <vector>

#include "tools/agent/Element.h"
#include "tools/common/Schema.h"

namespace tools::agent {

// What an operation answers of an object.
enum class Shape {
  Instance,        // INSTANCE
  Name,            // INSTANCENAME
  NamedInstance,   // VALUE.NAMEDINSTANCE: both
  ObjectPath,      // OBJECTPATH with the INSTANCEPATH
  ObjectWithPath,  // VALUE.OBJECTWITHPATH: INSTANCEPATH and INSTANCE
  Path,            // INSTANCEPATH
  WithPath,        // VALUE.INSTANCEWITHPATH: INSTANCEPATH and INSTANCE
};

// Whether it has an INSTANCE.
bool HasInstance(Shape shape);

struct ElementStyle {
  Shape shape;
  std::string_view host;  // this machine's name in absolute paths
  bool origins;           // write each property's class of origin
};

// Of objects of a class: rows of the key and of these properties. A shape without INSTANCE needs
// the key only.
Element ObjectElement(const ElementStyle& style, const ClassRow& type,
                      const std::vector<ClassProperty>& properties);

// Of links of a class: rows of the keys of origin and result. `properties` are the roles that an
// INSTANCE has, all of the class's or some.
Element LinkElement(const ElementStyle& style, const ClassRow& type,
                    const std::vector<ClassProperty>& properties);

}  // namespace tools::agent

#endif
