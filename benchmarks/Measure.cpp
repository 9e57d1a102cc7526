// SPDX-License-Identifier: MIT
#include "benchmarks/Measure.h"

#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <memory>

namespace bench {

namespace {

double MicrosecondsOf(clockid_t clock) {
  timespec now{};
  clock_gettime(clock, &now);
  return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) / 1e3;
}

}  // namespace

Clocks Clocks::Now() {
  return {MicrosecondsOf(CLOCK_PROCESS_CPUTIME_ID), MicrosecondsOf(CLOCK_MONOTONIC)};
}

std::size_t HeapInUse() {
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

// The allocator joins them when it is asked for more than a small block.
void JoinFreedBlocks() {
  constexpr std::size_t kLarge = 65536;
  void* volatile block = std::malloc(kLarge);
  std::free(block);
}

Resident Resident::Read() {
  Resident resident;
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen("/proc/self/status", "r"),
                                                             std::fclose);
  char line[256];
  while (file != nullptr && std::fgets(line, sizeof(line), file.get()) != nullptr) {
    unsigned long kilobytes = 0;
    if (std::sscanf(line, "VmHWM: %lu", &kilobytes) == 1) resident.peak = kilobytes * 1024;
    if (std::sscanf(line, "VmRSS: %lu", &kilobytes) == 1) resident.now = kilobytes * 1024;
  }
  return resident;
}

}  // namespace bench
