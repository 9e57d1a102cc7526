// SPDX-License-Identifier: MIT
//
// Puts members into roles and takes them out again, on both sides at once. A long list of a role
// may keep an empty slot for a member that was taken out.
//
// Thread safety: the caller holds the mutexes of the three authorization caches.
#ifndef KECPP_STUB_CLASSES_ROLELINKS_H
#define KECPP_STUB_CLASSES_ROLELINKS_H

namespace KE::Stub {

class Zorbel_Identity;
class Zorbel_Privilege;
class Zorbel_Role;

// Links the two unless they are linked. O(the shorter one of their lists).
void LinkMember(Zorbel_Role& role, Zorbel_Privilege& member);
void LinkMember(Zorbel_Role& role, Zorbel_Identity& member);

// Takes every link out of a role's list of privileges for which `keep` is false.
class PrivilegeFilter {
 public:
  virtual bool Keep(const Zorbel_Privilege& privilege) = 0;

 protected:
  ~PrivilegeFilter() = default;
};
void UnlinkPrivileges(Zorbel_Role& role, PrivilegeFilter& filter);

// Takes an identity out of every role. O(its roles).
void UnlinkAll(Zorbel_Identity& identity);

}  // namespace KE::Stub

#endif
