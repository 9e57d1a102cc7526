// SPDX-License-Identifier: MIT
//
// Figures of a process: processor time, elapsed time, heap in use, peak resident size.
#ifndef KECPP_BENCHMARKS_MEASURE_H
#define KECPP_BENCHMARKS_MEASURE_H

#include <cstddef>

namespace bench {

// Both clocks in microseconds. The processor time is that of the whole process, system included: on
// a shared machine it says more than the elapsed time.
struct Clocks {
  double cpu = 0;
  double wall = 0;

  static Clocks Now();
  Clocks operator-(const Clocks& begin) const { return {cpu - begin.cpu, wall - begin.wall}; }
};

// Bytes that the allocator has handed out, its own overhead included.
std::size_t HeapInUse();

// What the C library's allocator postpones when small blocks are freed is done at once.
void JoinFreedBlocks();

// Bytes; `peak` of the whole life of the process.
struct Resident {
  std::size_t now = 0;
  std::size_t peak = 0;

  static Resident Read();
};

}  // namespace bench

#endif
