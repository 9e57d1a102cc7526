// SPDX-License-Identifier: MIT
#include "foundation/KEVector.h"

#include "foundation/KEException.h"

namespace KELib {

void ThrowIndexOutOfBounds() {
  throw IndexOutOfBoundsException("IndexOutOfBoundsException");
}

void ThrowInvalidVectorIterator() {
  throw InvalidIteratorException("KEVectorIterator invalid");
}

}  // namespace KELib
