// SPDX-License-Identifier: MIT
#include "foundation/KEIteratorRegistry.h"

namespace KELib {

const unsigned int ITARY_START_SIZE = 2;

}  // namespace KELib
