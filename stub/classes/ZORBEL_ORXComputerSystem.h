// SPDX-License-Identifier: MIT
//
// The virtualization host. Its destructor deletes its links and empties their slots in the
// machines' lists: it writes into partner stubs, so the mutexes of both caches are held while one
// is deleted.
#ifndef KECPP_STUB_CLASSES_ZORBEL_ORXCOMPUTERSYSTEM_H
#define KECPP_STUB_CLASSES_ZORBEL_ORXCOMPUTERSYSTEM_H

#include <memory>

#include "foundation/KEExport.h"
#include "foundation/KEVector.h"
#include "stub/classes/CIM_ComputerSystem.h"
#include "stub/classes/ClassNames.h"
#include "stub/classes/ManagedObjectReference.h"

namespace KE::Stub {

class KECPP_API ZORBEL_ORXComputerSystem : public CIM_ComputerSystem {
 public:
  ZORBEL_ORXComputerSystem();
  ~ZORBEL_ORXComputerSystem() override;
  ZORBEL_ORXComputerSystem(const ZORBEL_ORXComputerSystem&) = delete;
  ZORBEL_ORXComputerSystem& operator=(const ZORBEL_ORXComputerSystem&) = delete;

  const char* GetStubClassName() override;
  KELib::KEVectorIterator<KELib::Stub::KEAssocStubBase*> GetAssocIterator(
      KELib::KEString& assocClassName) override;

  KELib::KEString UUID;
  KELib::KEString Vendor;
  KELib::KEString Model;
  ManagedObjectReference MoRef;  // the server's object; its value is `Name`
  // One link per machine on the host; null until the first one. Slots may be null.
  std::unique_ptr<KELib::KEVector<KELib::Stub::KEAssocStubBase*>> HostedDependencies;
};

// A new host with empty texts and no links; the caller owns it.
KECPP_API ZORBEL_ORXComputerSystem* CreateZORBEL_ORXComputerSystem();

}  // namespace KE::Stub

#endif
