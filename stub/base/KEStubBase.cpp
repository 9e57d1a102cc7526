// SPDX-License-Identifier: MIT
#include "stub/base/KEStubBase.h"

#include "stub/base/KEAssocStubBase.h"

namespace KELib::Stub {

KEStubBase::~KEStubBase() = default;

const char* KEStubBase::GetStubClassName() {
  return "";
}

KEVectorIterator<KEAssocStubBase*> KEStubBase::GetAssocIterator(KEString&) {
  return {};
}

}  // namespace KELib::Stub
