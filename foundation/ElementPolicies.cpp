// SPDX-License-Identifier: MIT
#include "foundation/ElementPolicies.h"

namespace KELib {

void SetZero(void* memory, unsigned int bytes) {
  if (bytes > 0) {
    std::memset(memory, 0, bytes);
  }
}

}  // namespace KELib
