// SPDX-License-Identifier: MIT
#include "stub/base/MRawStub.h"

namespace KELib::Stub {

MRawStub::~MRawStub() = default;

KEStubBase* CreateRawStub() {
  return new MRawStub;
}

}  // namespace KELib::Stub
