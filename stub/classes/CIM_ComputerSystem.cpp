// SPDX-License-Identifier: MIT
#include "stub/classes/CIM_ComputerSystem.h"

namespace KE::Stub {

CIM_ManagedElement::~CIM_ManagedElement() = default;
CIM_System::~CIM_System() = default;

}  // namespace KE::Stub
