// SPDX-License-Identifier: MIT
//
// The links between a role (the collection) and its members: privileges and identities.
//
// Both ends are set as long as a link is listed. The destructors touch neither end.
#ifndef KECPP_STUB_CLASSES_ZORBEL_MEMBEROFCOLLECTION_H
#define KECPP_STUB_CLASSES_ZORBEL_MEMBEROFCOLLECTION_H

#include "foundation/KEExport.h"
#include "stub/base/KEAssocStubBase.h"
#include "stub/classes/ClassNames.h"

namespace KE::Stub {

class Zorbel_Identity;
class Zorbel_Privilege;
class Zorbel_Role;

// A role's link to a privilege that it grants.
class KECPP_API Zorbel_PrivilegeMemberOfCollection : public KELib::Stub::KEAssocStubBase {
 public:
  ~Zorbel_PrivilegeMemberOfCollection() override;

  const char* GetStubClassName() override;
  const char* GetOriginRole() override;       // "Collection"
  const char* GetResultRole() override;       // "Member"
  const char* GetOriginClassName() override;  // the role's class
  const char* GetResultClassName() override;  // the privilege's class

  using KEAssocStubBase::GetAssocInstance;
  using KEAssocStubBase::GetKey;
  const char* GetKey(KELib::KEString& endClassName) override;
  bool KeyEquals(const char* endClassName, const char* keyValue) override;
  // The privilege for the role's class and the role for the privilege's: one walks from the named
  // end.
  KELib::Stub::KEStubBase* GetAssocInstance(KELib::KEString& endClassName) override;

  Zorbel_Role* Collection = nullptr;   // not owned
  Zorbel_Privilege* Member = nullptr;  // not owned
  unsigned int originIndex = 0;        // the highest place that it can have in the role's list
  unsigned int memberIndex = 0;        // and in the privilege's
};

// A role's link to an identity that holds it.
class KECPP_API Zorbel_IdentityMemberOfCollection : public KELib::Stub::KEAssocStubBase {
 public:
  ~Zorbel_IdentityMemberOfCollection() override;

  const char* GetStubClassName() override;
  const char* GetOriginRole() override;       // "Collection"
  const char* GetResultRole() override;       // "Member"
  const char* GetOriginClassName() override;  // the role's class
  const char* GetResultClassName() override;  // the identity's class

  using KEAssocStubBase::GetAssocInstance;
  using KEAssocStubBase::GetKey;
  const char* GetKey(KELib::KEString& endClassName) override;
  bool KeyEquals(const char* endClassName, const char* keyValue) override;
  // The identity for the role's class and the role for the identity's: one walks from the named
  // end.
  KELib::Stub::KEStubBase* GetAssocInstance(KELib::KEString& endClassName) override;

  Zorbel_Role* Collection = nullptr;  // not owned
  Zorbel_Identity* Member = nullptr;  // not owned
  unsigned int originIndex = 0;       // the highest place that it can have in the role's list
  unsigned int memberIndex = 0;       // and in the identity's
};

// New links without ends; the caller owns them until they are listed.
KECPP_API Zorbel_PrivilegeMemberOfCollection* CreateZorbel_PrivilegeMemberOfCollection();
KECPP_API Zorbel_IdentityMemberOfCollection* CreateZorbel_IdentityMemberOfCollection();

}  // namespace KE::Stub

#endif
