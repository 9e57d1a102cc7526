// SPDX-License-Identifier: MIT
//
// The root of everything that the caches hold: an in-memory record of one object of the server.
//
// Thread safety: none. A stub that a cache owns is read and written under the mutex of
//   that cache, and its pointer is of no use once the mutex is let go.
// Ownership: one container owns a stub: a data cache, or, for a link, the lists of its two ends.
#ifndef KECPP_STUB_BASE_KESTUBBASE_H
#define KECPP_STUB_BASE_KESTUBBASE_H

#include "foundation/KEExport.h"
#include "foundation/KEString.h"
#include "foundation/KEVector.h"

namespace KELib::Stub {

class KEAssocStubBase;

class KECPP_API KEStubBase {
 public:
  KEStubBase() = default;
  KEStubBase(const KEStubBase&) = default;
  KEStubBase& operator=(const KEStubBase&) = default;
  virtual ~KEStubBase();

  // The CIM-style class name; "" for stubs that have none, never null.
  virtual const char* GetStubClassName();

  // The stub's links of the association class of that name, compared exactly. Slots may be null:
  // pass over them. An iterator that is at its end where the stub has no such links.
  virtual KEVectorIterator<KEAssocStubBase*> GetAssocIterator(KEString& assocClassName);
};

}  // namespace KELib::Stub

#endif
