// SPDX-License-Identifier: MIT
//
// The one mechanism for the lists in which stubs hold their links. A link stands in the list of
// each of its two ends, the origin (a host, a role) and the member (a machine, a privilege, an
// identity); this keeps the two in step.
//
// Complexity: the origins' lists grow long, so a link remembers its place there (`originIndex`).
//   Elements only ever move towards the front, so the search starts at that place and goes down;
//   when it had to go far, the places are told anew. Filling a list, and dropping its members one
//   by one in any order, are therefore linear.
// Thread safety: none of its own; the caller holds the mutexes of both ends' caches.
#ifndef KECPP_STUB_CLASSES_ASSOCLIST_H
#define KECPP_STUB_CLASSES_ASSOCLIST_H

#include <memory>

#include "foundation/KEVector.h"
#include "stub/base/KEAssocStubBase.h"
#include "stub/base/StubCast.h"

namespace KE::Stub {

using AssocVector = KELib::KEVector<KELib::Stub::KEAssocStubBase*>;
using AssocList = std::unique_ptr<AssocVector>;  // null until the first link

// Lists of at least this capacity are packed instead of grown once half of their slots are empty.
constexpr unsigned int kLongList = 1024;

// The position of `link` in `list`, first looked for from `hint` downwards; the list's capacity
// plus count when it is absent.
unsigned int PositionOf(AssocVector& list, KELib::Stub::KEAssocStubBase* link, unsigned int hint);

// Makes the list when there is none. A long list that would grow although most of its slots are
// empty is packed, so that months of coming and going members do not make it longer and longer.
// Returns whether elements have moved.
bool Prepare(AssocList& list);

// Empties the slot of a link in its member's list, which keeps its length.
void EmptyMemberSlot(AssocList& list, KELib::Stub::KEAssocStubBase* link);

// Tells every link in an origin's list its place.
template <typename Link>
void TellPlaces(AssocVector& list) {
  for (unsigned int i = 0; i < list.Count(); ++i) {
    if (auto* link = KELib::Stub::StubCast<Link>(list[i])) link->originIndex = i;
  }
}

// The position of a link in its origin's list; not below the list's count when it is absent.
template <typename Link>
unsigned int PlaceInOrigin(AssocVector& list, Link* link) {
  constexpr unsigned int kFar = 256;
  const unsigned int position = PositionOf(list, link, link->originIndex);
  if (position < list.Count() && link->originIndex - position > kFar) TellPlaces<Link>(list);
  return position;
}

// Appends a link to its origin's list. When it throws (std::bad_alloc) the link is not in it.
template <typename Link>
void AppendToOrigin(AssocList& list, Link* link) {
  if (Prepare(list)) TellPlaces<Link>(*list);
  list->Add(link);
  link->originIndex = list->Count() - 1;
}

// Empties the slot of a link in its origin's list, which keeps its length.
template <typename Link>
void EmptyOriginSlot(AssocList& list, Link* link) {
  if (list == nullptr) return;
  const unsigned int position = PlaceInOrigin(*list, link);
  if (position < list->Count()) list->Get(position) = nullptr;
}

// Deletes every link in the list of an end that dies, and the list. `emptyPartnerSlot` is told each
// link first.
template <typename Link, typename EmptyPartnerSlot>
void DropLinks(AssocList& own, EmptyPartnerSlot emptyPartnerSlot) {
  if (own == nullptr) return;
  const unsigned int count = own->Count();
  for (unsigned int i = 0; i < count; ++i) {
    auto* link = KELib::Stub::StubCast<Link>(own->Get(i));
    if (link == nullptr) continue;
    emptyPartnerSlot(link);
    own->Get(i) = nullptr;
    delete link;
  }
  own.reset();
}

// Ends an origin: deletes the links in its list, leaving empty slots in the lists of its members.
template <typename Link, typename Member>
void DropMembers(AssocList& own, Member* Link::*member, AssocList Member::*memberList) {
  DropLinks<Link>(own, [&](Link* link) {
    if (link->*member != nullptr) EmptyMemberSlot(link->*member->*memberList, link);
  });
}

// Ends a member: deletes the links in its list, leaving empty slots in the lists of its origins.
template <typename Link, typename Origin>
void DropMemberships(AssocList& own, Origin* Link::*origin, AssocList Origin::*originList) {
  DropLinks<Link>(own, [&](Link* link) {
    if (link->*origin != nullptr) EmptyOriginSlot(link->*origin->*originList, link);
  });
}

}  // namespace KE::Stub

#endif
