// SPDX-License-Identifier: MIT
//
// Short ways to make data caches and stubs that are counted.
#ifndef KECPP_TESTS_INSTANCE_INSTANCEFIXTURE_H
#define KECPP_TESTS_INSTANCE_INSTANCEFIXTURE_H

#include "foundation/KEMutexGuard.h"
#include "instance/KETypeCache.h"
#include "support/Counted.h"

namespace KE::Instance {

using CountedStub = Counted<KELib::Stub::KEStubBase>;

inline KEDataCache& MakeCache(KETypeCache& types, const char* name) {
  KELib::KEString text(name);
  types.CreateDataCache(text);
  return *types.GetDataCache(text);
}

}  // namespace KE::Instance

#endif
