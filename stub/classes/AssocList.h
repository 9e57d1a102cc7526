// SPDX-License-Identifier: MIT
//
// The one mechanism for the lists in which stubs keep their links. A link is in the list of each of
// its two ends, the origin (a host, a role) and the member (a machine, a privilege, an identity);
// this keeps the two in step.
//
// Complexity: either list may grow long, so a link remembers its place in both (`originIndex`,
//   `memberIndex`). Elements only ever move towards the front, so the search starts at that place
//   and goes down; when it had to go far, all links of the list get their places again. Filling a
//   list, dropping its links in any order and moving them to another list are therefore linear.
// Thread safety: none; the caller holds the mutexes of both ends' caches.
#ifndef KECPP_STUB_CLASSES_ASSOCLIST_H
#define KECPP_STUB_CLASSES_ASSOCLIST_H

#include <memory>

#include "foundation/KEVector.h"
#include "stub/base/KEAssocStubBase.h"
#include "stub/base/StubCast.h"

namespace KE::Stub {

using AssocVector = KELib::KEVector<KELib::Stub::KEAssocStubBase*>;
using AssocList = std::unique_ptr<AssocVector>;  // null until the first link

// A list of at least this many slots counts as long. In it a link that is taken out leaves its
// place to the last one, where a shorter list moves the later ones down and keeps their order.
constexpr unsigned int kLongList = 1024;

// The position of `link` in `list`, first looked for from `hint` downwards; the list's capacity
// plus count when it is absent.
unsigned int PositionOf(AssocVector& list, KELib::Stub::KEAssocStubBase* link, unsigned int hint);

// Makes the list when there is none. A long list that would grow although most of its slots are
// empty is packed, so that months of coming and going partners do not make it longer and longer.
// Returns whether elements have moved.
bool Prepare(AssocList& list);

// Below, `place` is the field in which links remember their place in that list.

// Gives every link in a list its place.
template <typename Link>
void RenewPlaces(AssocVector& list, unsigned int Link::*place) {
  for (unsigned int i = 0; i < list.Count(); ++i) {
    if (auto* link = KELib::Stub::StubCast<Link>(list[i])) link->*place = i;
  }
}

// The position of a link in a list; not below the list's count when it is absent.
template <typename Link>
unsigned int PlaceIn(AssocVector& list, Link* link, unsigned int Link::*place) {
  constexpr unsigned int kFar = 256;
  const unsigned int position = PositionOf(list, link, link->*place);
  if (position < list.Count() && link->*place - position > kFar) RenewPlaces(list, place);
  return position;
}

// Appends a link. When it throws (std::bad_alloc) the link is not in the list.
template <typename Link>
void Append(AssocList& list, Link* link, unsigned int Link::*place) {
  if (Prepare(list)) RenewPlaces(*list, place);
  list->Add(link);
  link->*place = list->Count() - 1;
}

// Takes the link at `position` out of a list; beyond the last one nothing happens. Ends the list's
// iterators. Throws nothing.
template <typename Link>
void TakeOutAt(AssocVector& list, unsigned int position, unsigned int Link::*place) {
  if (position >= list.Count()) return;
  const unsigned int last = list.Count() - 1;
  if (list.Count() >= kLongList && position != last) {
    list[position] = list[last];
    if (auto* moved = KELib::Stub::StubCast<Link>(list[last])) moved->*place = position;
    position = last;
  }
  list.RemoveAt(position);
}

template <typename Link>
void TakeOut(AssocList& list, Link* link, unsigned int Link::*place) {
  if (list != nullptr) TakeOutAt(*list, PlaceIn(*list, link, place), place);
}

// Empties the slot of a link in a list, which keeps its length.
template <typename Link>
void EmptySlot(AssocList& list, Link* link, unsigned int Link::*place) {
  if (list == nullptr) return;
  const unsigned int position = PlaceIn(*list, link, place);
  if (position < list->Count()) list->Get(position) = nullptr;
}

// Deletes every link in the list of an end that dies, and the list. `emptyPartnerSlot` is called
// with each link first.
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
    if (link->*member != nullptr) {
      EmptySlot(link->*member->*memberList, link, &Link::memberIndex);
    }
  });
}

// Ends a member: deletes the links in its list, leaving empty slots in the lists of its origins.
template <typename Link, typename Origin>
void DropMemberships(AssocList& own, Origin* Link::*origin, AssocList Origin::*originList) {
  DropLinks<Link>(own, [&](Link* link) {
    if (link->*origin != nullptr) {
      EmptySlot(link->*origin->*originList, link, &Link::originIndex);
    }
  });
}

}  // namespace KE::Stub

#endif
