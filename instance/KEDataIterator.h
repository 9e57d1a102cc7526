// SPDX-License-Identifier: MIT
//
// A position in a data cache. Removing a stub, emptying the cache and growing it end the iterator.
//
// Thread safety: none; hold the cache's mutex from before it is made until after it is
//   destroyed, since every iterator registers with its cache.
#ifndef KECPP_INSTANCE_KEDATAITERATOR_H
#define KECPP_INSTANCE_KEDATAITERATOR_H

#include "foundation/KEExport.h"
#include "foundation/KEHashmap.h"
#include "foundation/KEString.h"
#include "stub/base/KEAssocStubBase.h"
#include "stub/base/KEStubBase.h"

namespace KE::Instance {

class KECPP_API KEDataIterator {
 public:
  using Position = KELib::KEHashmapIterator<KELib::KEString, KELib::Stub::KEStubBase*>;
  using Entry = KELib::KEEntry<KELib::KEString, KELib::Stub::KEStubBase*>;

  KEDataIterator() = default;  // bound to nothing, at its end
  // At the entry of `position`.
  explicit KEDataIterator(const Position& position);
  KEDataIterator(const KEDataIterator& other);

  // Takes the other's position over, except between iterators of the same cache: these only copy
  // the entry that was read last, and the position stays.
  KEDataIterator& operator=(const KEDataIterator& other);

  // Steps on; at the end nothing happens.
  KEDataIterator& operator++();
  KEDataIterator operator++(int);  // the position before the step

  // The entry: `key` and `value`, the stub. Null at the end.
  Entry*& operator*();
  Entry*& operator->();

  bool End() const;

 private:
  Position position;
  Entry* entry = nullptr;  // filled by the last * or ->
};

}  // namespace KE::Instance

#endif
