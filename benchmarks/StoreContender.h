// SPDX-License-Identifier: MIT
//
// The part that the peers have in common: the store of standard containers.
#ifndef KECPP_BENCHMARKS_STORECONTENDER_H
#define KECPP_BENCHMARKS_STORECONTENDER_H

#include "benchmarks/Contender.h"
#include "benchmarks/Store.h"

namespace bench {

class StoreContender : public Contender {
 public:
  std::uint64_t Checksum() override { return store.Checksum(); }
  std::size_t Walk() override { return store.Walk(); }
  void Drop() override { store.Drop(); }
  Store& GetStore() { return store; }

 protected:
  Store store;
};

}  // namespace bench

#endif
