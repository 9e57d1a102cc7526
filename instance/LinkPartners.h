// SPDX-License-Identifier: MIT
//
// Who a stub is linked with.
//
// Thread safety: none; the caller holds the mutexes of the stub's lock group.
#ifndef KECPP_INSTANCE_LINKPARTNERS_H
#define KECPP_INSTANCE_LINKPARTNERS_H

#include "stub/base/StubCast.h"
#include "stub/classes/AssocList.h"
#include "stub/classes/ZORBEL_HostedDependency.h"
#include "stub/classes/ZORBEL_ORXComputerSystem.h"
#include "stub/classes/ZORBEL_VMComputerSystem.h"
#include "stub/classes/Zorbel_Identity.h"
#include "stub/classes/Zorbel_MemberOfCollection.h"
#include "stub/classes/Zorbel_Privilege.h"
#include "stub/classes/Zorbel_Role.h"

namespace KE::Instance {

// Calls `visit` with the other end of each link in a list, which `end` names.
template <typename Link, typename End, typename Visit>
void ForEachEnd(const KE::Stub::AssocList& list, End* Link::*end, Visit visit) {
  if (list == nullptr) return;
  for (unsigned int i = 0; i < list->Count(); ++i) {
    const auto* link = KELib::Stub::StubCast<Link>(list->Get(i));
    if (link != nullptr && link->*end != nullptr) visit(*(link->*end));
  }
}

// Calls `visit` with each stub to which this one is linked. O(links).
template <typename Visit>
void ForEachPartner(KELib::Stub::KEStubBase& stub, Visit visit) {
  using namespace KE::Stub;
  using KELib::Stub::StubCast;
  if (auto* machine = StubCast<ZORBEL_VMComputerSystem>(&stub)) {
    ForEachEnd(machine->HostedDependencies, &ZORBEL_HostedDependency::Antecedent, visit);
  } else if (auto* host = StubCast<ZORBEL_ORXComputerSystem>(&stub)) {
    ForEachEnd(host->HostedDependencies, &ZORBEL_HostedDependency::Dependent, visit);
  } else if (auto* role = StubCast<Zorbel_Role>(&stub)) {
    ForEachEnd(role->PrivilegeMembers, &Zorbel_PrivilegeMemberOfCollection::Member, visit);
    ForEachEnd(role->IdentityMembers, &Zorbel_IdentityMemberOfCollection::Member, visit);
  } else if (auto* privilege = StubCast<Zorbel_Privilege>(&stub)) {
    ForEachEnd(privilege->MemberOfCollections, &Zorbel_PrivilegeMemberOfCollection::Collection,
               visit);
  } else if (auto* identity = StubCast<Zorbel_Identity>(&stub)) {
    ForEachEnd(identity->MemberOfCollections, &Zorbel_IdentityMemberOfCollection::Collection,
               visit);
  }
}

}  // namespace KE::Instance

#endif
