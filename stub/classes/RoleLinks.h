// SPDX-License-Identifier: MIT
//
// Puts members into roles and takes them out again, on both sides at once.
//
// Thread safety: the caller holds the mutexes of the three authorization caches.
#ifndef KECPP_STUB_CLASSES_ROLELINKS_H
#define KECPP_STUB_CLASSES_ROLELINKS_H

#include <vector>

#include "stub/base/KEStubBase.h"

namespace KE::Stub {

class Zorbel_Identity;
class Zorbel_Privilege;
class Zorbel_Role;

// Learns of each link that was made and of each that is about to end. Throws nothing.
class LinkWatcher {
 public:
  virtual ~LinkWatcher() = default;
  virtual void LinkChanged(KELib::Stub::KEStubBase& end, KELib::Stub::KEStubBase& other) = 0;
};

// Makes the role's privileges, or the identity's roles, exactly the `wanted` ones. Links that are
// wanted stay as they are, and one that is wanted twice is made once. Linear in the links that were
// there and in `wanted`; where these are the same in the same order, one look at each.
// When it throws (std::bad_alloc), some links are made and both sides agree. `watcher` may be null.
void SetPrivileges(Zorbel_Role& role, const std::vector<Zorbel_Privilege*>& wanted,
                   LinkWatcher* watcher = nullptr);
void SetRoles(Zorbel_Identity& identity, const std::vector<Zorbel_Role*>& wanted,
              LinkWatcher* watcher = nullptr);

// Links the two unless they are linked. O(the shorter one of their lists).
void LinkMember(Zorbel_Role& role, Zorbel_Identity& member, LinkWatcher* watcher = nullptr);

}  // namespace KE::Stub

#endif
