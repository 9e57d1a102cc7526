// SPDX-License-Identifier: MIT
//
// What takes part in the comparison: something that keeps an inventory and brings it up to date
// from an update set in memory. The library is one. The others do the same work with a well-known
// parser in front of a store of standard containers (Store.h).
//
// Thread safety: none; a process runs one contender on one thread.
#ifndef KECPP_BENCHMARKS_CONTENDER_H
#define KECPP_BENCHMARKS_CONTENDER_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "benchmarks/Document.h"

namespace bench {

class Contender {
 public:
  virtual ~Contender() = default;

  // Gets the first set before the clock starts.
  virtual void Prepare(const Text&) {}

  // Applies an update set, which is used up: it is parsed in place if the component can do that,
  // and freed.
  virtual void Apply(Text text) = 0;

  // Sums up everything that the store holds, links included, in any order. Contenders that got the
  // same sets agree.
  virtual std::uint64_t Checksum() = 0;

  // Visits every machine and its host and adds up the lengths of their names.
  virtual std::size_t Walk() = 0;

  // Empties the store; what it is made of stays usable.
  virtual void Drop() = 0;
};

// The names that MakeContender knows, in the order of the report.
std::vector<std::string> ContenderNames();

// Null for a name that is not known, or not built because its component is missing.
std::unique_ptr<Contender> MakeContender(const std::string& name);

}  // namespace bench

#endif
