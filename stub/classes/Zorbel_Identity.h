// SPDX-License-Identifier: MIT
//
// A user known to the management server. Its destructor deletes its links and empties their slots
// in the roles' lists: the mutexes of the authorization caches are held while one is deleted.
#ifndef KECPP_STUB_CLASSES_ZORBEL_IDENTITY_H
#define KECPP_STUB_CLASSES_ZORBEL_IDENTITY_H

#include <memory>

#include "foundation/KEExport.h"
#include "foundation/KEString.h"
#include "foundation/KEVector.h"
#include "stub/base/KEAssocStubBase.h"
#include "stub/base/KEStubBase.h"
#include "stub/classes/ClassNames.h"

namespace KE::Stub {

class KECPP_API Zorbel_Identity : public KELib::Stub::KEStubBase {
 public:
  Zorbel_Identity();
  ~Zorbel_Identity() override;
  Zorbel_Identity(const Zorbel_Identity&) = delete;
  Zorbel_Identity& operator=(const Zorbel_Identity&) = delete;

  const char* GetStubClassName() override;
  // The identity's links whatever class is asked for: it has one kind only.
  KELib::KEVectorIterator<KELib::Stub::KEAssocStubBase*> GetAssocIterator(
      KELib::KEString& assocClassName) override;

  KELib::KEString InstanceID;  // the key: the principal's name
  unsigned int reserved = 0;
  // Links to the roles that the identity holds; null until the first one. Slots may be null.
  std::unique_ptr<KELib::KEVector<KELib::Stub::KEAssocStubBase*>> MemberOfCollections;
};

// A new identity without a name and links; the caller owns it.
KECPP_API Zorbel_Identity* CreateZorbel_Identity();

}  // namespace KE::Stub

#endif
