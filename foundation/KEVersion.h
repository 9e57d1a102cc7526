// SPDX-License-Identifier: MIT
//
// The library's version, as text. The build reads it from here, so that it is stated once.
#ifndef KECPP_FOUNDATION_KEVERSION_H
#define KECPP_FOUNDATION_KEVERSION_H

#include "foundation/KEExport.h"

// The version of the headers that a program was compiled against.
#define KECPP_VERSION "1.1.0"

namespace KELib {

// The version of the library that the program runs with. A literal; any thread; never fails.
KECPP_API const char* Version();

}  // namespace KELib

#endif
