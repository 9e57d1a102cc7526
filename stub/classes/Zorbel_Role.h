// SPDX-License-Identifier: MIT
//
// A role: a named collection of privileges that identities hold. Its destructor deletes its links
// and empties their slots in the members' lists: the mutexes of the authorization caches are held
// while one is deleted.
#ifndef KECPP_STUB_CLASSES_ZORBEL_ROLE_H
#define KECPP_STUB_CLASSES_ZORBEL_ROLE_H

#include <memory>

#include "foundation/KEExport.h"
#include "foundation/KEVector.h"
#include "stub/classes/CIM_ComputerSystem.h"
#include "stub/classes/ClassNames.h"

namespace KE::Stub {

// A named set of members, as CIM has it.
class KECPP_API Zorbel_Collection : public CIM_ManagedElement {};

class KECPP_API Zorbel_Role : public Zorbel_Collection {
 public:
  Zorbel_Role();
  ~Zorbel_Role() override;
  Zorbel_Role(const Zorbel_Role&) = delete;
  Zorbel_Role& operator=(const Zorbel_Role&) = delete;

  const char* GetStubClassName() override;
  KELib::KEVectorIterator<KELib::Stub::KEAssocStubBase*> GetAssocIterator(
      KELib::KEString& assocClassName) override;

  KELib::KEString Text;      // stays empty
  KELib::KEString Name;      // the key: the server's identifier of the role
  KELib::KEString RoleType;  // "SystemDefined" or "UserDefined"
  // Links to the members; null until the first one. Slots may be null.
  std::unique_ptr<KELib::KEVector<KELib::Stub::KEAssocStubBase*>> PrivilegeMembers;
  std::unique_ptr<KELib::KEVector<KELib::Stub::KEAssocStubBase*>> IdentityMembers;
};

// A new role with empty texts and no links; the caller owns it.
KECPP_API Zorbel_Role* CreateZorbel_Role();

}  // namespace KE::Stub

#endif
