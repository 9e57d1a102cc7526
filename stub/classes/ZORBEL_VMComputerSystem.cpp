// SPDX-License-Identifier: MIT
#include "stub/classes/ZORBEL_VMComputerSystem.h"

#include "stub/classes/AssocList.h"
#include "stub/classes/ZORBEL_HostedDependency.h"
#include "stub/classes/ZORBEL_ORXComputerSystem.h"

namespace KE::Stub {

ZORBEL_VMComputerSystem::ZORBEL_VMComputerSystem() = default;

ZORBEL_VMComputerSystem::~ZORBEL_VMComputerSystem() {
  DropMemberships(HostedDependencies, &ZORBEL_HostedDependency::Antecedent,
                  &ZORBEL_ORXComputerSystem::HostedDependencies);
}

const char* ZORBEL_VMComputerSystem::GetStubClassName() {
  return ZORBEL_VMComputerSystemClass;
}

KELib::KEVectorIterator<KELib::Stub::KEAssocStubBase*> ZORBEL_VMComputerSystem::GetAssocIterator(
    KELib::KEString& assocClassName) {
  if (HostedDependencies == nullptr || !assocClassName.Equals(ZORBEL_HostedDependencyClass)) {
    return CIM_ComputerSystem::GetAssocIterator(assocClassName);
  }
  return HostedDependencies->Begin();
}

ZORBEL_VMComputerSystem* CreateZORBEL_VMComputerSystem() {
  return new ZORBEL_VMComputerSystem;
}

}  // namespace KE::Stub
