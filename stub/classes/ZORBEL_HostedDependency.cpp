// SPDX-License-Identifier: MIT
#include "stub/classes/ZORBEL_HostedDependency.h"

#include "stub/classes/EndMatch.h"
#include "stub/classes/ZORBEL_ORXComputerSystem.h"
#include "stub/classes/ZORBEL_VMComputerSystem.h"

namespace KE::Stub {

ZORBEL_HostedDependency::~ZORBEL_HostedDependency() = default;

const char* ZORBEL_HostedDependency::GetStubClassName() {
  return ZORBEL_HostedDependencyClass;
}
const char* ZORBEL_HostedDependency::GetOriginRole() {
  return "Antecedent";
}
const char* ZORBEL_HostedDependency::GetResultRole() {
  return "Dependent";
}
const char* ZORBEL_HostedDependency::GetOriginClassName() {
  return ZORBEL_ORXComputerSystemClass;
}
const char* ZORBEL_HostedDependency::GetResultClassName() {
  return ZORBEL_VMComputerSystemClass;
}
const char* ZORBEL_HostedDependency::GetKey(KELib::KEString&) {
  return "Name";
}

bool ZORBEL_HostedDependency::KeyEquals(const char* endClassName, const char* keyValue) {
  if (IsClass(endClassName, ZORBEL_ORXComputerSystemClass)) {
    return HasKey(Antecedent, &CIM_System::Name, keyValue);
  }
  if (IsClass(endClassName, ZORBEL_VMComputerSystemClass)) {
    return HasKey(Dependent, &CIM_System::Name, keyValue);
  }
  return KEAssocStubBase::KeyEquals(endClassName, keyValue);
}

KELib::Stub::KEStubBase* ZORBEL_HostedDependency::GetAssocInstance(KELib::KEString& endClassName) {
  if (endClassName.Equals(ZORBEL_ORXComputerSystemClass)) return Dependent;
  if (endClassName.Equals(ZORBEL_VMComputerSystemClass)) return Antecedent;
  return KEAssocStubBase::GetAssocInstance(endClassName);
}

ZORBEL_HostedDependency* CreateZORBEL_HostedDependency() {
  return new ZORBEL_HostedDependency;
}

}  // namespace KE::Stub
