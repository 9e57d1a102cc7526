// SPDX-License-Identifier: MIT
#include "stub/classes/Zorbel_Identity.h"

#include "stub/classes/AssocList.h"
#include "stub/classes/Zorbel_MemberOfCollection.h"
#include "stub/classes/Zorbel_Role.h"

namespace KE::Stub {

Zorbel_Identity::Zorbel_Identity() = default;

Zorbel_Identity::~Zorbel_Identity() {
  DropMemberships(MemberOfCollections, &Zorbel_IdentityMemberOfCollection::Collection,
                  &Zorbel_Role::IdentityMembers);
}

const char* Zorbel_Identity::GetStubClassName() {
  return Zorbel_IdentityClass;
}

KELib::KEVectorIterator<KELib::Stub::KEAssocStubBase*> Zorbel_Identity::GetAssocIterator(
    KELib::KEString& assocClassName) {
  if (MemberOfCollections == nullptr) return KEStubBase::GetAssocIterator(assocClassName);
  return MemberOfCollections->Begin();
}

Zorbel_Identity* CreateZorbel_Identity() {
  return new Zorbel_Identity;
}

}  // namespace KE::Stub
