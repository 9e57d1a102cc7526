// SPDX-License-Identifier: MIT
//
// The CIM-style bases: managed element, system, computer system. Texts hold the XML text as the
// server sent it, entities undecoded (xml/XmlEscape.h decodes).
#ifndef KECPP_STUB_CLASSES_CIM_COMPUTERSYSTEM_H
#define KECPP_STUB_CLASSES_CIM_COMPUTERSYSTEM_H

#include "foundation/KEExport.h"
#include "foundation/KEString.h"
#include "stub/base/KEAssocStubBase.h"
#include "stub/base/KEStubBase.h"

namespace KE::Stub {

// Whatever has a name that people read.
class KECPP_API CIM_ManagedElement : public KELib::Stub::KEStubBase {
 public:
  ~CIM_ManagedElement() override;

  KELib::KEString Caption;      // a short label; filled for roles only
  KELib::KEString Description;  // free text
  KELib::KEString ElementName;  // the display name
};

// A managed element that the server identifies.
class KECPP_API CIM_System : public CIM_ManagedElement {
 public:
  ~CIM_System() override;

  KELib::KEString Name;  // the key: the server's identifier of the object
};

// A system that runs: a host or a machine.
class KECPP_API CIM_ComputerSystem : public CIM_System {
 public:
  // CIM operational status: 0 unknown, 2 OK, 3 degraded, 6 error, 10 stopped, 15 dormant.
  unsigned short OperationalStatus = 0;
};

}  // namespace KE::Stub

#endif
