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

template <typename Link>
bool IsLinked(AssocList& memberList, const Zorbel_Role& role) {
  if (memberList == nullptr) return false;
  for (unsigned int i = 0; i < memberList->Count(); ++i) {
    const auto* link = dynamic_cast<const Link*>(memberList->Get(i));
    if (link != nullptr && link->Collection == &role) return true;
  }
  return false;
}

template <typename Link, typename Member>
void LinkInto(Zorbel_Role& role, AssocList& roleList, Member& member) {
  if (IsLinked<Link>(member.MemberOfCollections, role)) return;
  auto link = std::make_unique<Link>();
  link->Collection = &role;
  link->Member = &member;
  Prepare(member.MemberOfCollections, 2);
  member.MemberOfCollections->Add(link.get());
  try {
    AppendToOrigin(roleList, link.get());
  } catch (...) {
    TakeOut(member.MemberOfCollections, link.get(), ~0U);
    throw;
  }
  link.release();
}

template <typename Link>
void Unlink(Link* link, AssocList& roleList) {
  TakeOut(roleList, link, link->originIndex);
  TakeOut(link->Member->MemberOfCollections, link, ~0U);
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
