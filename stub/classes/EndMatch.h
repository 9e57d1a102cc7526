// SPDX-License-Identifier: MIT
//
// How associations decide whether an end is the one that a caller asks for.
#ifndef KECPP_STUB_CLASSES_ENDMATCH_H
#define KECPP_STUB_CLASSES_ENDMATCH_H

#include <strings.h>

#include "foundation/KEString.h"

namespace KE::Stub {

// Class names are compared without letter case, as CIM does; null is no class.
inline bool IsClass(const char* asked, const char* name) {
  return asked != nullptr && strcasecmp(asked, name) == 0;
}

// Keys are compared exactly. A missing end or key value matches nothing.
template <typename End, typename Owner>
bool HasKey(const End* end, KELib::KEString Owner::*key, const char* keyValue) {
  return end != nullptr && keyValue != nullptr && (end->*key).Equals(keyValue);
}

}  // namespace KE::Stub

#endif
