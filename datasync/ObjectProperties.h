// SPDX-License-Identifier: MIT
//
// How the objects of a kind become stubs: what makes one, and which property goes into which field.
//
// Thread safety: constant. What is called through it writes into stubs: the caller holds the data
//   caches of the kind's lock group.
#ifndef KECPP_DATASYNC_OBJECTPROPERTIES_H
#define KECPP_DATASYNC_OBJECTPROPERTIES_H

#include "datasync/ObjectCaches.h"
#include "datasync/PropertyTable.h"
#include "instance/ObjectKinds.h"

namespace KE::Service {

struct ObjectProperties {
  ObjectCaches::MakeStub make;
  PropertyTable table;
};

// Null for kinds whose objects are no stubs: the stubs of the authorization manager's are the items
// of its lists (ListValue.h), and a task becomes one when it has ended (ObjectTarget.h).
extern const ObjectProperties* const kPropertiesByKind[KE::Instance::kObjectKindCount];

inline const ObjectProperties* PropertiesOf(KE::Instance::KindId kind) {
  return kPropertiesByKind[static_cast<std::size_t>(kind)];
}

}  // namespace KE::Service

#endif
