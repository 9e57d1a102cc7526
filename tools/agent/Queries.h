// SPDX-License-Identifier: MIT
//
// Copies from the inventory what a request asks for. Writing and sending come later.
//
// Thread safety: any thread.
#ifndef KECPP_TOOLS_AGENT_QUERIES_H
#define KECPP_TOOLS_AGENT_QUERIES_H

#include <kecpp/inventory.h>

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

// A link seen from one of its ends.
struct LinkFromEnd {
  Link link;
  const ClassRow* partnerType;

  const std::string& PartnerKey() const;
};

// Which links of an object are wanted; null and empty take all. Roles are those of the ends.
struct LinkFilter {
  const ClassRow* assocClass = nullptr;
  const ClassRow* partnerClass = nullptr;
  std::string ownRole;
  std::string partnerRole;
};

// Every object of a class. O(objects).
void ReadAll(const kecpp::Inventory& inventory, Rows& rows);

// One object, by its raw key; false when there is none. O(1) and its links.
bool ReadOne(const kecpp::Inventory& inventory, const std::string& key, Rows& rows);

// Adds each link of an object that passes the filter. False when there is no such object. O(links
// of the object).
bool ReadLinks(const kecpp::Inventory& inventory, const ObjectName& object,
               const LinkFilter& filter, std::vector<LinkFromEnd>& links);

// Every link of a concrete association class. O(links).
std::vector<Link> ReadAllLinks(const kecpp::Inventory& inventory, const ClassRow& assocClass);

// Fills in the keys of the link of class `link.type` between those two ends, which are raw texts;
// false when there is none.
bool ReadLink(const kecpp::Inventory& inventory, const std::string& origin,
              const std::string& result, Link& link);

}  // namespace tools::agent

#endif
