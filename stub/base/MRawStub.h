// SPDX-License-Identifier: MIT
//
// A generic stub of three texts, for a caller's own use; the library caches none.
#ifndef KECPP_STUB_BASE_MRAWSTUB_H
#define KECPP_STUB_BASE_MRAWSTUB_H

#include "foundation/KEExport.h"
#include "foundation/KEString.h"
#include "stub/base/KEStubBase.h"

namespace KELib::Stub {

class KECPP_API MRawStub : public KEStubBase {
 public:
  ~MRawStub() override;

  KEString first;
  KEString second;
  KEString third;
};

// A new raw stub with empty texts; the caller owns it.
KECPP_API KEStubBase* CreateRawStub();

}  // namespace KELib::Stub

#endif
