// SPDX-License-Identifier: MIT
//
// A privilege of the management server. Its destructor deletes its links and empties their slots in
// the roles' lists: the mutexes of the authorization caches are held while one is deleted.
#ifndef KECPP_STUB_CLASSES_ZORBEL_PRIVILEGE_H
#define KECPP_STUB_CLASSES_ZORBEL_PRIVILEGE_H

#include <memory>

#include "foundation/KEExport.h"
#include "foundation/KEVector.h"
#include "stub/classes/CIM_ComputerSystem.h"
#include "stub/classes/ClassNames.h"

namespace KE::Stub {

class KECPP_API Zorbel_Privilege : public CIM_ManagedElement {
 public:
  Zorbel_Privilege();
  ~Zorbel_Privilege() override;
  Zorbel_Privilege(const Zorbel_Privilege&) = delete;
  Zorbel_Privilege& operator=(const Zorbel_Privilege&) = delete;

  const char* GetStubClassName() override;
  // The privilege's links whatever class is asked for: it has one kind only.
  KELib::KEVectorIterator<KELib::Stub::KEAssocStubBase*> GetAssocIterator(
      KELib::KEString& assocClassName) override;

  KELib::KEString InstanceID;  // the key: the server's identifier of the privilege
  // Links to the roles that hold the privilege; null until the first one. Slots may be null.
  std::unique_ptr<KELib::KEVector<KELib::Stub::KEAssocStubBase*>> MemberOfCollections;
};

// A new privilege with empty texts and no links; the caller owns it.
KECPP_API Zorbel_Privilege* CreateZorbel_Privilege();

}  // namespace KE::Stub

#endif
