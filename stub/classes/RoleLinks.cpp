// SPDX-License-Identifier: MIT
#include "stub/classes/RoleLinks.h"

#include <memory>
#include <unordered_set>

#include "stub/classes/AssocList.h"
#include "stub/classes/Zorbel_Identity.h"
#include "stub/classes/Zorbel_MemberOfCollection.h"
#include "stub/classes/Zorbel_Privilege.h"
#include "stub/classes/Zorbel_Role.h"

namespace KE::Stub {

namespace {

using KELib::Stub::StubCast;

// One kind of link, seen from one of its ends: the end's list of them, the field of a link that
// names the end, and the field with the link's place in that list. Then the same of the other end.
template <typename L, typename E, typename O>
struct Side {
  using Link = L;
  using End = E;
  using Other = O;

  AssocList End::*list;
  End* Link::*end;
  unsigned int Link::*place;
  AssocList Other::*otherList;
  Other* Link::*other;
  unsigned int Link::*otherPlace;
};

using PrivilegeLink = Zorbel_PrivilegeMemberOfCollection;
using IdentityLink = Zorbel_IdentityMemberOfCollection;

constexpr Side<PrivilegeLink, Zorbel_Role, Zorbel_Privilege> kPrivilegesOfRole{
    &Zorbel_Role::PrivilegeMembers, &PrivilegeLink::Collection,
    &PrivilegeLink::originIndex,    &Zorbel_Privilege::MemberOfCollections,
    &PrivilegeLink::Member,         &PrivilegeLink::memberIndex};

constexpr Side<IdentityLink, Zorbel_Identity, Zorbel_Role> kRolesOfIdentity{
    &Zorbel_Identity::MemberOfCollections, &IdentityLink::Member,     &IdentityLink::memberIndex,
    &Zorbel_Role::IdentityMembers,         &IdentityLink::Collection, &IdentityLink::originIndex};

template <typename S>
using Others = std::vector<typename S::Other*>;
template <typename S>
using OtherSet = std::unordered_set<typename S::Other*>;

inline unsigned int SlotsOf(const AssocList& list) {
  return list != nullptr ? list->Count() : 0;
}

template <typename S>
void Connect(const S& side, typename S::End& end, typename S::Other& other, LinkWatcher* watcher) {
  auto link = std::make_unique<typename S::Link>();
  (*link).*side.end = &end;
  (*link).*side.other = &other;
  Append(other.*side.otherList, link.get(), side.otherPlace);
  try {
    Append(end.*side.list, link.get(), side.place);
  } catch (...) {
    TakeOut(other.*side.otherList, link.get(), side.otherPlace);
    throw;
  }
  link.release();
  if (watcher != nullptr) watcher->LinkChanged(end, other);
}

template <typename S>
void Disconnect(const S& side, typename S::End& end, typename S::Link* link, LinkWatcher* watcher) {
  if (watcher != nullptr && link->*side.other != nullptr) {
    watcher->LinkChanged(end, *(link->*side.other));
  }
  TakeOut(end.*side.list, link, side.place);
  if (link->*side.other != nullptr) {
    TakeOut((link->*side.other)->*side.otherList, link, side.otherPlace);
  }
  delete link;
}

// Whether the end is linked to exactly these, in this order.
template <typename S>
bool HasExactly(const S& side, typename S::End& end, const Others<S>& wanted) {
  const AssocList& list = end.*side.list;
  std::size_t same = 0;
  for (unsigned int i = 0; i < SlotsOf(list); ++i) {
    const auto* link = StubCast<typename S::Link>(list->Get(i));
    if (link == nullptr) continue;
    if (same == wanted.size() || wanted[same] != link->*side.other) return false;
    ++same;
  }
  return same == wanted.size();
}

// Deletes the end's links to all but these; returns to whom it is linked still.
template <typename S>
OtherSet<S> DropOthers(const S& side, typename S::End& end, const Others<S>& wanted,
                       LinkWatcher* watcher) {
  OtherSet<S> kept;
  std::vector<typename S::Link*> links;
  const AssocList& list = end.*side.list;
  for (unsigned int i = 0; i < SlotsOf(list); ++i) {
    if (auto* link = StubCast<typename S::Link>(list->Get(i))) links.push_back(link);
  }
  if (links.empty()) return kept;
  const OtherSet<S> named(wanted.begin(), wanted.end());
  // From the back: what is taken out then moves the fewest others.
  for (auto link = links.rbegin(); link != links.rend(); ++link) {
    if (named.count((*link)->*side.other) > 0) {
      kept.insert((*link)->*side.other);
    } else {
      Disconnect(side, end, *link, watcher);
    }
  }
  return kept;
}

// Whether the link that `other` got last is one to this end.
template <typename S>
bool IsNewestLink(const S& side, typename S::End& end, typename S::Other& other) {
  const AssocList& list = other.*side.otherList;
  if (SlotsOf(list) == 0) return false;
  const auto* link = StubCast<typename S::Link>(list->Get(list->Count() - 1));
  return link != nullptr && link->*side.end == &end;
}

template <typename S>
void SetLinks(const S& side, typename S::End& end, const Others<S>& wanted, LinkWatcher* watcher) {
  if (HasExactly(side, end, wanted)) return;
  const OtherSet<S> kept = DropOthers(side, end, wanted, watcher);
  for (typename S::Other* other : wanted) {
    // One that is named twice was linked a moment ago: nothing else makes links meanwhile.
    if (kept.count(other) == 0 && !IsNewestLink(side, end, *other)) {
      Connect(side, end, *other, watcher);
    }
  }
}

// Either list may be long: a role that everybody holds, an identity that holds every role.
template <typename S>
bool IsLinked(const S& side, typename S::End& end, typename S::Other& other) {
  const AssocList& own = end.*side.list;
  const AssocList& others = other.*side.otherList;
  const AssocList& shorter = SlotsOf(own) < SlotsOf(others) ? own : others;
  for (unsigned int i = 0; i < SlotsOf(shorter); ++i) {
    const auto* link = StubCast<typename S::Link>(shorter->Get(i));
    if (link != nullptr && link->*side.end == &end && link->*side.other == &other) return true;
  }
  return false;
}

}  // namespace

void SetPrivileges(Zorbel_Role& role, const std::vector<Zorbel_Privilege*>& wanted,
                   LinkWatcher* watcher) {
  SetLinks(kPrivilegesOfRole, role, wanted, watcher);
}

void SetRoles(Zorbel_Identity& identity, const std::vector<Zorbel_Role*>& wanted,
              LinkWatcher* watcher) {
  SetLinks(kRolesOfIdentity, identity, wanted, watcher);
}

void LinkMember(Zorbel_Role& role, Zorbel_Identity& member, LinkWatcher* watcher) {
  if (!IsLinked(kRolesOfIdentity, member, role)) Connect(kRolesOfIdentity, member, role, watcher);
}

}  // namespace KE::Stub
