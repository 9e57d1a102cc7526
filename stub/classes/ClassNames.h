// SPDX-License-Identifier: MIT
//
// Class names: what GetStubClassName returns and under which the type cache files its data caches.
#ifndef KECPP_STUB_CLASSES_CLASSNAMES_H
#define KECPP_STUB_CLASSES_CLASSNAMES_H

#include "foundation/KEExport.h"

namespace KE::Stub {

extern KECPP_API const char* const TaskInfoClass;
extern KECPP_API const char* const ZORBEL_ORXComputerSystemClass;
extern KECPP_API const char* const ZORBEL_VMComputerSystemClass;
extern KECPP_API const char* const ZORBEL_HostedDependencyClass;
extern KECPP_API const char* const Zorbel_AdminDomainHostedDependencyClass;  // for providers
extern KECPP_API const char* const Zorbel_PrivilegeClass;
extern KECPP_API const char* const Zorbel_RoleClass;
extern KECPP_API const char* const Zorbel_IdentityClass;
extern KECPP_API const char* const Zorbel_PrivilegeMemberOfCollectionClass;
extern KECPP_API const char* const Zorbel_IdentityMemberOfCollectionClass;
extern KECPP_API const char* const CIM_MemberOfCollectionClass;  // CIM parent of the two above

}  // namespace KE::Stub

#endif
