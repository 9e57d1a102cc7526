// SPDX-License-Identifier: MIT
#include "stub/classes/ZORBEL_ORXComputerSystem.h"

#include "stub/classes/AssocList.h"
#include "stub/classes/ZORBEL_HostedDependency.h"
#include "stub/classes/ZORBEL_VMComputerSystem.h"

namespace KE::Stub {

ZORBEL_ORXComputerSystem::ZORBEL_ORXComputerSystem() = default;

ZORBEL_ORXComputerSystem::~ZORBEL_ORXComputerSystem() {
  DropMembers(HostedDependencies, &ZORBEL_HostedDependency::Dependent,
              &ZORBEL_VMComputerSystem::HostedDependencies);
}

const char* ZORBEL_ORXComputerSystem::GetStubClassName() {
  return ZORBEL_ORXComputerSystemClass;
}

KELib::KEVectorIterator<KELib::Stub::KEAssocStubBase*> ZORBEL_ORXComputerSystem::GetAssocIterator(
    KELib::KEString& assocClassName) {
  if (HostedDependencies == nullptr || !assocClassName.Equals(ZORBEL_HostedDependencyClass)) {
    return CIM_ComputerSystem::GetAssocIterator(assocClassName);
  }
  return HostedDependencies->Begin();
}

ZORBEL_ORXComputerSystem* CreateZORBEL_ORXComputerSystem() {
  return new ZORBEL_ORXComputerSystem;
}

}  // namespace KE::Stub
