// SPDX-License-Identifier: MIT
#include "stub/classes/ManagedObjectReference.h"

#include <memory>

namespace KE::Stub {

ManagedObjectReference::~ManagedObjectReference() = default;

KELib::Stub::KEStubBase* CreateManagedObjectReference() {
  return new ManagedObjectReference;
}

ManagedObjectReference* CreateManagedObjectReference(KELib::KEString& type,
                                                     KELib::KEString& value) {
  auto reference = std::make_unique<ManagedObjectReference>();
  reference->type = type;
  reference->value = value;
  return reference.release();
}

void DeleteManagedObjectReference(KELib::Stub::KEStubBase* r) {
  delete r;
}

}  // namespace KE::Stub
