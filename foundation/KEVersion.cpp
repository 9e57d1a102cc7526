// SPDX-License-Identifier: MIT
#include "foundation/KEVersion.h"

namespace KELib {

const char* Version() {
  return KECPP_VERSION;
}

}  // namespace KELib
