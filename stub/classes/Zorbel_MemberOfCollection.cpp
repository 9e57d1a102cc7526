// SPDX-License-Identifier: MIT
#include "stub/classes/Zorbel_MemberOfCollection.h"

#include "stub/classes/EndMatch.h"
#include "stub/classes/Zorbel_Identity.h"
#include "stub/classes/Zorbel_Privilege.h"
#include "stub/classes/Zorbel_Role.h"

namespace KE::Stub {

namespace {

using KELib::KEString;
using KELib::Stub::KEStubBase;

const char* KeyOf(KEString& endClassName, const char* memberClass) {
  if (endClassName.Equals(Zorbel_RoleClass)) return "Name";
  return endClassName.Equals(memberClass) ? "InstanceID" : "";
}

template <typename Link, typename Member>
bool KeyMatches(const Link& link, KEString Member::*memberKey, const char* memberClass,
                const char* endClassName, const char* keyValue) {
  if (IsClass(endClassName, Zorbel_RoleClass)) {
    return HasKey(link.Collection, &Zorbel_Role::Name, keyValue);
  }
  return IsClass(endClassName, memberClass) && HasKey(link.Member, memberKey, keyValue);
}

template <typename Link>
KEStubBase* PartnerOf(const Link& link, KEString& endClassName, const char* memberClass) {
  if (endClassName.Equals(Zorbel_RoleClass)) return link.Member;
  return endClassName.Equals(memberClass) ? static_cast<KEStubBase*>(link.Collection) : nullptr;
}

}  // namespace

using ToPrivilege = Zorbel_PrivilegeMemberOfCollection;
using ToIdentity = Zorbel_IdentityMemberOfCollection;

ToPrivilege::~Zorbel_PrivilegeMemberOfCollection() = default;
const char* ToPrivilege::GetStubClassName() {
  return Zorbel_PrivilegeMemberOfCollectionClass;
}
const char* ToPrivilege::GetOriginRole() {
  return "Collection";
}
const char* ToPrivilege::GetResultRole() {
  return "Member";
}
const char* ToPrivilege::GetOriginClassName() {
  return Zorbel_RoleClass;
}
const char* ToPrivilege::GetResultClassName() {
  return Zorbel_PrivilegeClass;
}
const char* ToPrivilege::GetKey(KEString& endClassName) {
  return KeyOf(endClassName, Zorbel_PrivilegeClass);
}
bool ToPrivilege::KeyEquals(const char* endClassName, const char* keyValue) {
  return KeyMatches(*this, &Zorbel_Privilege::InstanceID, Zorbel_PrivilegeClass, endClassName,
                    keyValue);
}
KEStubBase* ToPrivilege::GetAssocInstance(KEString& endClassName) {
  return PartnerOf(*this, endClassName, Zorbel_PrivilegeClass);
}

ToIdentity::~Zorbel_IdentityMemberOfCollection() = default;
const char* ToIdentity::GetStubClassName() {
  return Zorbel_IdentityMemberOfCollectionClass;
}
const char* ToIdentity::GetOriginRole() {
  return "Collection";
}
const char* ToIdentity::GetResultRole() {
  return "Member";
}
const char* ToIdentity::GetOriginClassName() {
  return Zorbel_RoleClass;
}
const char* ToIdentity::GetResultClassName() {
  return Zorbel_IdentityClass;
}
const char* ToIdentity::GetKey(KEString& endClassName) {
  return KeyOf(endClassName, Zorbel_IdentityClass);
}
bool ToIdentity::KeyEquals(const char* endClassName, const char* keyValue) {
  return KeyMatches(*this, &Zorbel_Identity::InstanceID, Zorbel_IdentityClass, endClassName,
                    keyValue);
}
KEStubBase* ToIdentity::GetAssocInstance(KEString& endClassName) {
  return PartnerOf(*this, endClassName, Zorbel_IdentityClass);
}

Zorbel_PrivilegeMemberOfCollection* CreateZorbel_PrivilegeMemberOfCollection() {
  return new Zorbel_PrivilegeMemberOfCollection;
}

Zorbel_IdentityMemberOfCollection* CreateZorbel_IdentityMemberOfCollection() {
  return new Zorbel_IdentityMemberOfCollection;
}

}  // namespace KE::Stub
