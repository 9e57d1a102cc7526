// SPDX-License-Identifier: MIT
//
// The link between a host (the antecedent) and a machine that runs on it (the dependent).
//
// Both ends are set as long as the link is listed. Its destructor touches neither end.
#ifndef KECPP_STUB_CLASSES_ZORBEL_HOSTEDDEPENDENCY_H
#define KECPP_STUB_CLASSES_ZORBEL_HOSTEDDEPENDENCY_H

#include "foundation/KEExport.h"
#include "stub/base/KEAssocStubBase.h"
#include "stub/classes/ClassNames.h"

namespace KE::Stub {

class ZORBEL_ORXComputerSystem;
class ZORBEL_VMComputerSystem;

class KECPP_API ZORBEL_HostedDependency : public KELib::Stub::KEAssocStubBase {
 public:
  ~ZORBEL_HostedDependency() override;

  const char* GetStubClassName() override;
  const char* GetOriginRole() override;       // "Antecedent"
  const char* GetResultRole() override;       // "Dependent"
  const char* GetOriginClassName() override;  // the host's class
  const char* GetResultClassName() override;  // the machine's class

  using KEAssocStubBase::GetAssocInstance;
  using KEAssocStubBase::GetKey;
  const char* GetKey(KELib::KEString& endClassName) override;  // "Name", whatever the class
  bool KeyEquals(const char* endClassName, const char* keyValue) override;
  // The machine for the host's class and the host for the machine's: one walks from the named end.
  KELib::Stub::KEStubBase* GetAssocInstance(KELib::KEString& endClassName) override;

  ZORBEL_ORXComputerSystem* Antecedent = nullptr;  // not owned
  ZORBEL_VMComputerSystem* Dependent = nullptr;    // not owned
  unsigned int originIndex = 0;  // the highest place that it can have in the host's list
  unsigned int memberIndex = 0;  // and in the machine's
};

// A new link without ends; the caller owns it until it is listed.
KECPP_API ZORBEL_HostedDependency* CreateZORBEL_HostedDependency();

}  // namespace KE::Stub

#endif
