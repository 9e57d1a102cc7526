// SPDX-License-Identifier: MIT
//
// A link between two stubs: the root of the association classes.
//
// Ownership: listed in the list of each end; never owns its ends. Code that deletes a link takes it
//   out of both lists first; the stubs' destructors do.
#ifndef KECPP_STUB_BASE_KEASSOCSTUBBASE_H
#define KECPP_STUB_BASE_KEASSOCSTUBBASE_H

#include "foundation/KEExport.h"
#include "stub/base/KEStubBase.h"

namespace KELib::Stub {

class KECPP_API KEAssocStubBase : public KEStubBase {
 public:
  ~KEAssocStubBase() override;

  // The roles and class names of the two ends; "" where there are none.
  virtual const char* GetOriginRole();
  virtual const char* GetResultRole();
  virtual const char* GetOriginClassName();
  virtual const char* GetResultClassName();

  // The name of the key property of the end of that class, compared exactly; "" for another class.
  virtual const char* GetKey(KEString& endClassName);

  // True when the end of that class, compared without letter case, has that key. False for nulls.
  virtual bool KeyEquals(const char* endClassName, const char* keyValue);

  // The partner of the end of that class, compared exactly; null for another class.
  virtual KEStubBase* GetAssocInstance(KEString& endClassName);

  // Null: only the form above is provided by the concrete classes.
  virtual KEStubBase* GetAssocInstance(const char* endClassName);

  // The virtual form on a borrowed text: nothing is copied.
  const char* GetKey(const char* endClassName);
};

}  // namespace KELib::Stub

#endif
