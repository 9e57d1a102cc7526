// SPDX-License-Identifier: MIT
#include "stub/classes/Zorbel_Privilege.h"

#include "stub/classes/AssocList.h"
#include "stub/classes/Zorbel_MemberOfCollection.h"
#include "stub/classes/Zorbel_Role.h"

namespace KE::Stub {

Zorbel_Privilege::Zorbel_Privilege() = default;

Zorbel_Privilege::~Zorbel_Privilege() {
  DropMemberships(MemberOfCollections, &Zorbel_PrivilegeMemberOfCollection::Collection,
                  &Zorbel_Role::PrivilegeMembers);
}

const char* Zorbel_Privilege::GetStubClassName() {
  return Zorbel_PrivilegeClass;
}

KELib::KEVectorIterator<KELib::Stub::KEAssocStubBase*> Zorbel_Privilege::GetAssocIterator(
    KELib::KEString& assocClassName) {
  if (MemberOfCollections == nullptr) return CIM_ManagedElement::GetAssocIterator(assocClassName);
  return MemberOfCollections->Begin();
}

Zorbel_Privilege* CreateZorbel_Privilege() {
  return new Zorbel_Privilege;
}

}  // namespace KE::Stub
