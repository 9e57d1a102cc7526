// SPDX-License-Identifier: MIT
//
// Copies from the inventory what leads to the objects that a request asks for.
//
// Thread safety: any thread.
#ifndef KECPP_TOOLS_AGENT_QUERIES_H
#define KECPP_TOOLS_AGENT_QUERIES_H

#include <kecpp/inventory.h>

#include <optional>
#include <string>
#include <vector>

#include "tools/agent/Rows.h"
#include "tools/common/Schema.h"

namespace tools::agent {

// One object, by class and key. `key` is raw text, as a client sends it.
struct ObjectName {
  const ClassRow* type;
  std::string key;
};

// One link: its class and the keys of its ends, XML texts as the inventory holds them.
struct Link {
  const ClassRow* type;
  std::string originKey;
  std::string resultKey;
};

// An object's links of one class: the keys of its partners, XML texts, each followed by a NUL.
struct LinksOfClass {
  const ClassRow* type;
  const ClassRow* partnerType;
  bool isOrigin;  // the object is
  std::string partners;
};

struct LinksOfObject {
  std::string key;  // of the object, an XML text
  std::vector<LinksOfClass> byClass;
};

// Which links of an object are wanted; null and empty take all. Roles are those of the ends.
struct LinkFilter {
  const ClassRow* assocClass = nullptr;
  const ClassRow* partnerClass = nullptr;
  std::string ownRole;
  std::string partnerRole;
};

// Whether a reference is of the role that a filter asks for; an empty one asks for none.
bool RolePasses(const std::string& wanted, const PropertyRow& role);

// One object by its raw key: `row` gets its key and these properties. False when there is none.
// O(1) and its links.
bool ReadOne(const kecpp::Inventory& inventory, const ObjectName& object,
             const std::vector<ClassProperty>& properties, Rows& row);

// The links of an object that pass the filter, in the order of the classes; nothing when there is
// no such object. O(links of the object).
std::optional<LinksOfObject> ReadLinks(const kecpp::Inventory& inventory, const ObjectName& object,
                                       const LinkFilter& filter);

// Fills in the keys of the link of class `link.type` between those two ends, which are raw texts;
// false when there is none.
bool ReadLink(const kecpp::Inventory& inventory, const std::string& origin,
              const std::string& result, Link& link);

}  // namespace tools::agent

#endif
