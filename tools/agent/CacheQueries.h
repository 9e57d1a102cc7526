// SPDX-License-Identifier: MIT
//
// Copies from the caches what a request asks for. Every function here takes the mutexes that it
// needs in the library's order (roles, privileges, identities; machines, hosts), copies, and lets
// go. Writing and sending come later.
//
// Thread safety: any thread that holds no cache's mutex.
#ifndef KECPP_TOOLS_AGENT_CACHEQUERIES_H
#define KECPP_TOOLS_AGENT_CACHEQUERIES_H

#include <kecpp.h>

#include <functional>
#include <string>
#include <vector>

#include "tools/common/Rows.h"
#include "tools/common/Schema.h"

namespace tools::agent {

// One object, by class and key. `key` is raw text, as a client sends it.
struct ObjectName {
  const ClassRow* type;
  std::string key;
};

// One link: its class and the keys of its ends, XML texts as the stubs hold them.
struct Link {
  const ClassRow* type;
  std::string originKey;
  std::string resultKey;
};

// Which links of an object are wanted; null and empty take all. Roles are those of the ends.
struct LinkFilter {
  const ClassRow* assocClass = nullptr;
  const ClassRow* partnerClass = nullptr;
  std::string ownRole;
  std::string partnerRole;
};

// Every instance of a class with a cache. O(instances).
void ReadAll(KE::Instance::KETypeCache& cache, Rows& rows);

// One instance; false when there is none. O(1) for keys without unusual entities.
bool ReadOne(KE::Instance::KETypeCache& cache, const std::string& key, Rows& rows);

// Calls `copy` with each link of an object that passes the filter and with the stub at its other
// end. False when there is no such object. O(links of the object).
using CopyLink = std::function<void(const Link& link, const ClassRow& partnerType,
                                    KELib::Stub::KEStubBase& partner)>;
bool ReadLinks(KE::Instance::KETypeCache& cache, const ObjectName& object, const LinkFilter& filter,
               const CopyLink& copy);

// Every link of a concrete association class. O(links).
std::vector<Link> ReadAllLinks(KE::Instance::KETypeCache& cache, const ClassRow& assocClass);

// Fills in the keys of the link of class `link.type` between those two ends, which are raw texts;
// false when there is none.
bool ReadLink(KE::Instance::KETypeCache& cache, const std::string& origin,
              const std::string& result, Link& link);

}  // namespace tools::agent

#endif
