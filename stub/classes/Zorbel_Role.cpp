// SPDX-License-Identifier: MIT
#include "stub/classes/Zorbel_Role.h"

#include "stub/classes/AssocList.h"
#include "stub/classes/Zorbel_Identity.h"
#include "stub/classes/Zorbel_MemberOfCollection.h"
#include "stub/classes/Zorbel_Privilege.h"

namespace KE::Stub {

Zorbel_Role::Zorbel_Role() = default;

Zorbel_Role::~Zorbel_Role() {
  DropMembers(PrivilegeMembers, &Zorbel_PrivilegeMemberOfCollection::Member,
              &Zorbel_Privilege::MemberOfCollections);
  DropMembers(IdentityMembers, &Zorbel_IdentityMemberOfCollection::Member,
              &Zorbel_Identity::MemberOfCollections);
}

const char* Zorbel_Role::GetStubClassName() {
  return Zorbel_RoleClass;
}

KELib::KEVectorIterator<KELib::Stub::KEAssocStubBase*> Zorbel_Role::GetAssocIterator(
    KELib::KEString& assocClassName) {
  if (PrivilegeMembers != nullptr &&
      assocClassName.Equals(Zorbel_PrivilegeMemberOfCollectionClass)) {
    return PrivilegeMembers->Begin();
  }
  if (IdentityMembers != nullptr && assocClassName.Equals(Zorbel_IdentityMemberOfCollectionClass)) {
    return IdentityMembers->Begin();
  }
  return Zorbel_Collection::GetAssocIterator(assocClassName);
}

Zorbel_Role* CreateZorbel_Role() {
  return new Zorbel_Role;
}

}  // namespace KE::Stub
