// SPDX-License-Identifier: MIT
#include "foundation/KEHashmap.h"

#include <climits>
#include <new>

#include "foundation/KEException.h"

namespace KELib {

const unsigned int HASH_CAP = 20;
const float HASH_FILLRATIO = 0.75f;

unsigned int GrownBucketCount(unsigned int wanted, float fillRatio) {
  const long double buckets = 2.0L * wanted / fillRatio;
  if (buckets > UINT_MAX) {
    throw std::bad_alloc();
  }
  return buckets < 1 ? 1 : static_cast<unsigned int>(buckets);
}

unsigned int FillThreshold(unsigned int bucketCount, float fillRatio) {
  const long double entries = static_cast<long double>(bucketCount) * fillRatio;
  return entries > UINT_MAX ? UINT_MAX : static_cast<unsigned int>(entries);
}

void ThrowInvalidHashmapIterator() {
  throw InvalidIteratorException("KEHashmapIterator invalid");
}

}  // namespace KELib
