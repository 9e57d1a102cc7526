// SPDX-License-Identifier: MIT
//
// Casts a stub to its class. Stubs nearly always are of the very class that is asked for, which is
// recognised without the search through the bases that dynamic_cast makes.
#ifndef KECPP_STUB_BASE_STUBCAST_H
#define KECPP_STUB_BASE_STUBCAST_H

#include <typeinfo>

#include "stub/base/KEStubBase.h"

namespace KELib::Stub {

// Null for null and for a stub of another class.
template <typename Class, typename Base>
Class* StubCast(Base* stub) {
  if (stub == nullptr) return nullptr;
  if (typeid(*stub) == typeid(Class)) return static_cast<Class*>(stub);
  return dynamic_cast<Class*>(stub);
}

}  // namespace KELib::Stub

#endif
