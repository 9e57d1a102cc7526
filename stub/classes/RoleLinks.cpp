// SPDX-License-Identifier: MIT
#include "stub/classes/RoleLinks.h"

#include <memory>
#include <vector>

#include "stub/classes/AssocList.h"
#include "stub/classes/Zorbel_Identity.h"
#include "stub/classes/Zorbel_MemberOfCollection.h"
#include "stub/classes/Zorbel_Privilege.h"
#include "stub/classes/Zorbel_Role.h"

namespace KE::Stub {

namespace {

// Either list may be long: a role that everybody holds, a privilege that every role has.
template <typename Link, typename Member>
bool IsLinked(const Zorbel_Role& role, const AssocList& roleList, const Member& member) {
  const AssocList& memberList = member.MemberOfCollections;
  if (roleList == nullptr || memberList == nullptr) return false;
  const AssocVector& shorter = roleList->Count() < memberList->Count() ? *roleList : *memberList;
  for (unsigned int i = 0; i < shorter.Count(); ++i) {
    const auto* link = dynamic_cast<const Link*>(shorter.Get(i));
    if (link != nullptr && link->Collection == &role && link->Member == &member) return true;
  }
  return false;
}

template <typename Link>
void TakeOutOfMember(AssocList& memberList, Link* link) {
  if (memberList == nullptr) return;
  const unsigned int position = PositionOf(*memberList, link, memberList->Count());
  if (position < memberList->Count()) memberList->RemoveAt(position);
}

// Moving everything down for each member of a long list would be quadratic over all of them: there
// the slot is left empty, and filled by packing when the list would grow.
template <typename Link>
void TakeOutOfRole(AssocList& roleList, Link* link) {
  if (roleList == nullptr) return;
  if (roleList->Capacity() >= kLongList) {
    EmptyOriginSlot(roleList, link);
    return;
  }
  const unsigned int position = PlaceInOrigin(*roleList, link);
  if (position < roleList->Count()) roleList->RemoveAt(position);
}

template <typename Link, typename Member>
void LinkInto(Zorbel_Role& role, AssocList& roleList, Member& member) {
  if (IsLinked<Link>(role, roleList, member)) return;
  auto link = std::make_unique<Link>();
  link->Collection = &role;
  link->Member = &member;
  Prepare(member.MemberOfCollections);
  member.MemberOfCollections->Add(link.get());
  try {
    AppendToOrigin(roleList, link.get());
  } catch (...) {
    TakeOutOfMember(member.MemberOfCollections, link.get());
    throw;
  }
  link.release();
}

template <typename Link>
void Unlink(Link* link, AssocList& roleList) {
  TakeOutOfRole(roleList, link);
  TakeOutOfMember(link->Member->MemberOfCollections, link);
  delete link;
}

template <typename Link>
std::vector<Link*> LinksIn(AssocList& list) {
  std::vector<Link*> links;
  if (list == nullptr) return links;
  for (unsigned int i = 0; i < list->Count(); ++i) {
    if (auto* link = dynamic_cast<Link*>(list->Get(i))) links.push_back(link);
  }
  return links;
}

}  // namespace

void LinkMember(Zorbel_Role& role, Zorbel_Privilege& member) {
  LinkInto<Zorbel_PrivilegeMemberOfCollection>(role, role.PrivilegeMembers, member);
}

void LinkMember(Zorbel_Role& role, Zorbel_Identity& member) {
  LinkInto<Zorbel_IdentityMemberOfCollection>(role, role.IdentityMembers, member);
}

void UnlinkPrivileges(Zorbel_Role& role, PrivilegeFilter& filter) {
  // From the back: what is taken out then moves the fewest others.
  auto links = LinksIn<Zorbel_PrivilegeMemberOfCollection>(role.PrivilegeMembers);
  for (auto link = links.rbegin(); link != links.rend(); ++link) {
    if (!filter.Keep(*(*link)->Member)) Unlink(*link, role.PrivilegeMembers);
  }
}

void UnlinkAll(Zorbel_Identity& identity) {
  auto links = LinksIn<Zorbel_IdentityMemberOfCollection>(identity.MemberOfCollections);
  for (auto link = links.rbegin(); link != links.rend(); ++link) {
    Unlink(*link, (*link)->Collection->IdentityMembers);
  }
}

}  // namespace KE::Stub
