// SPDX-License-Identifier: MIT
#include "stub/classes/ClassNames.h"

namespace KE::Stub {

const char* const TaskInfoClass = "TaskInfo";
const char* const ZORBEL_ORXComputerSystemClass = "ZORBEL_ORXComputerSystem";
const char* const ZORBEL_VMComputerSystemClass = "ZORBEL_VMComputerSystem";
const char* const ZORBEL_HostedDependencyClass = "ZORBEL_HostedDependency";
const char* const Zorbel_AdminDomainHostedDependencyClass = "Zorbel_AdminDomainHostedDependency";
const char* const Zorbel_PrivilegeClass = "Zorbel_Privilege";
const char* const Zorbel_RoleClass = "Zorbel_Role";
const char* const Zorbel_IdentityClass = "Zorbel_Identity";
const char* const Zorbel_PrivilegeMemberOfCollectionClass = "Zorbel_PrivilegeMemberOfCollection";
const char* const Zorbel_IdentityMemberOfCollectionClass = "Zorbel_IdentityMemberOfCollection";
const char* const CIM_MemberOfCollectionClass = "CIM_MemberOfCollection";

}  // namespace KE::Stub
