// SPDX-License-Identifier: MIT
//
// A non-owning handle through which a cache hands out a stub. It never deletes its stub, and is
// valid only while the mutex of the stub's cache is held.
#ifndef KECPP_STUB_BASE_KESTUBREF_H
#define KECPP_STUB_BASE_KESTUBREF_H

#include "foundation/KEExport.h"

namespace KELib::Stub {

class KEStubBase;

class KECPP_API KEStubRef {
 public:
  KEStubRef() = default;
  KEStubRef(KEStubBase* stub) : data(stub) {}  // NOLINT: implicit; null is allowed

  bool HasData() const { return data != nullptr; }
  KEStubBase* GetData() const { return data; }

  // Stores the first stub that is offered; null and every later one are ignored.
  void SetData(KEStubBase* stub) {
    if (data == nullptr) data = stub;
  }

 private:
  KEStubBase* data = nullptr;
};

}  // namespace KELib::Stub

#endif
