// SPDX-License-Identifier: MIT
//
// One virtual machine. Its destructor deletes its link and empties the slot in the host's list: it
// writes into a partner stub, so the mutexes of both caches are held while one is deleted.
#ifndef KECPP_STUB_CLASSES_ZORBEL_VMCOMPUTERSYSTEM_H
#define KECPP_STUB_CLASSES_ZORBEL_VMCOMPUTERSYSTEM_H

#include <memory>

#include "foundation/KEExport.h"
#include "foundation/KEVector.h"
#include "stub/classes/CIM_ComputerSystem.h"
#include "stub/classes/ClassNames.h"
#include "stub/classes/ManagedObjectReference.h"

namespace KE::Stub {

class KECPP_API ZORBEL_VMComputerSystem : public CIM_ComputerSystem {
 public:
  ZORBEL_VMComputerSystem();
  ~ZORBEL_VMComputerSystem() override;
  ZORBEL_VMComputerSystem(const ZORBEL_VMComputerSystem&) = delete;
  ZORBEL_VMComputerSystem& operator=(const ZORBEL_VMComputerSystem&) = delete;

  const char* GetStubClassName() override;
  KELib::KEVectorIterator<KELib::Stub::KEAssocStubBase*> GetAssocIterator(
      KELib::KEString& assocClassName) override;

  KELib::KEString UUID;
  KELib::KEString GuestFullName;
  KELib::KEString GuestHostName;
  KELib::KEString GuestIPAddress;
  KELib::KEString VMPathName;
  ManagedObjectReference MoRef;  // the server's object; its value is `Name`
  KELib::KEString PowerState;    // "poweredOn", "poweredOff", "suspended", as received
  // A single slot: element 0 is the link to the host, or null. Null until the first link.
  std::unique_ptr<KELib::KEVector<KELib::Stub::KEAssocStubBase*>> HostedDependencies;
};

// A new machine with empty texts and no link; the caller owns it.
KECPP_API ZORBEL_VMComputerSystem* CreateZORBEL_VMComputerSystem();

}  // namespace KE::Stub

#endif
