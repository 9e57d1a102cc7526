// SPDX-License-Identifier: MIT
//
// Names one object of the server: its type and the server's identifier.
//
// Identifiers are unique across types, so that hashing and equality use the value alone.
#ifndef KECPP_STUB_CLASSES_MANAGEDOBJECTREFERENCE_H
#define KECPP_STUB_CLASSES_MANAGEDOBJECTREFERENCE_H

#include "foundation/ElementPolicies.h"
#include "foundation/KEExport.h"
#include "foundation/KEString.h"
#include "stub/base/KEAssocStubBase.h"
#include "stub/base/KEStubBase.h"

namespace KE::Stub {

class KECPP_API ManagedObjectReference : public KELib::Stub::KEStubBase {
 public:
  ~ManagedObjectReference() override;

  KELib::KEString type;
  KELib::KEString value;
};

// A new, empty reference; the caller owns it.
KECPP_API KELib::Stub::KEStubBase* CreateManagedObjectReference();

// A new reference with copies of both texts; the caller owns it.
KECPP_API ManagedObjectReference* CreateManagedObjectReference(KELib::KEString& type,
                                                               KELib::KEString& value);

// Deletes a reference; null is left alone.
KECPP_API void DeleteManagedObjectReference(KELib::Stub::KEStubBase* r);

}  // namespace KE::Stub

namespace KELib {

template <>
KECPP_API inline unsigned int ComputeHash<KE::Stub::ManagedObjectReference*>(
    KE::Stub::ManagedObjectReference*& r) {
  return ComputeHash<KEString>(r->value);
}

template <>
KECPP_API inline bool Equals<KE::Stub::ManagedObjectReference*>(
    KE::Stub::ManagedObjectReference*& a, KE::Stub::ManagedObjectReference*& b) {
  return a->value.Equals(b->value);
}

}  // namespace KELib

#endif
