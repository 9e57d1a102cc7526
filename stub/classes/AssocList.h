// SPDX-License-Identifier: MIT
//
// The one mechanism for the lists in which stubs hold their links. A link stands in the list of each
// of its two ends; this keeps the two in step.
//
// Complexity: a link remembers its place in the origin's list, the one that grows long. Elements
//   only ever move towards the front, so the search starts there and goes down. Dropping all members
//   of a collection one by one is therefore linear, not quadratic.
#ifndef KECPP_STUB_CLASSES_ASSOCLIST_H
#define KECPP_STUB_CLASSES_ASSOCLIST_H

#include <memory>

#include "foundation/KEVector.h"
#include "stub/base/KEAssocStubBase.h"

namespace KE::Stub {

using AssocVector = KELib::KEVector<KELib::Stub::KEAssocStubBase*>;
using AssocList = std::unique_ptr<AssocVector>;  // null until the first link

// The position of `link` in `list`, at most `hint` if the hint is a position; the list's capacity
// plus count when it is absent.
unsigned int PositionOf(AssocVector& list, KELib::Stub::KEAssocStubBase* link, unsigned int hint);

// Makes the list when there is none and gives it room for one more. A list that would grow although
// half of its slots are empty is packed instead, so that months of coming and going members do not
// make it longer and longer.
void Prepare(AssocList& list, unsigned int firstCapacity);

// Appends a link and remembers its place if this is the origin's list.
template <typename Link>
void AppendToOrigin(AssocList& list, Link* link) {
  Prepare(list, 2);
  list->Add(link);
  link->originIndex = list->Count() - 1;
}

// Takes a link out of a list; later elements move down. Nothing when it is not there.
void TakeOut(AssocList& list, KELib::Stub::KEAssocStubBase* link, unsigned int hint);

// Empties the slot of a link in its partner's list, which keeps its length.
void EmptySlot(AssocList& list, KELib::Stub::KEAssocStubBase* link, unsigned int hint);

// Ends an end: deletes every link in its list, emptying the slots in the partners' lists first, and
// the list. `partnerList` answers with the list of the other end; `isOriginList` tells whether that
// is the list in which the link remembers its place.
template <typename Link, typename PartnerList>
void DropLinks(AssocList& own, bool isOriginList, PartnerList partnerList) {
  if (own == nullptr) return;
  const unsigned int count = own->Count();
  for (unsigned int i = 0; i < count; ++i) {
    auto* link = dynamic_cast<Link*>(own->Get(i));
    if (link == nullptr) continue;
    EmptySlot(partnerList(*link), link, isOriginList ? link->originIndex : ~0U);
    own->Get(i) = nullptr;
    delete link;
  }
  own.reset();
}

}  // namespace KE::Stub

#endif
