// SPDX-License-Identifier: MIT
//
// Workloads of the whole path and of several threads. One line of JSON each.
//
//   wire      "call": a small call's round trip, elapsed, as a multiple of the bare libcurl loop;
//             "receive": processor time of receiving 100 MB, as a multiple of libcurl into one
//             block; "path": processor time from the first call to full caches, as a multiple of
//             receiving the same reply plus filling
//   latency   from the moment in which a change is sent until a reader sees it, against a libcurl
//             long poll that only receives it; medians in microseconds
//   readers   look-ups, and iterations over all machines, by 1 to 4 threads, alone and beside a
//             thread that applies changes at full speed: throughput, longest wait for the lock;
//             and that wait beside 100 changes a second
//   feeds     processor time of one change at 1,000 and at 100,000 machines without a change feed
//   and
//             with one that has given all that came before; and of taking one entry; microseconds
//   links     processor time of each machine, when all of a host's machines move to another host,
//             in the order of the fill or in any, and of each link, when every role grants every
//             privilege; microseconds, and how many times as much it is in a large inventory
//   idle [S]  processor time of S seconds in which nothing changes, for a minute of them; and that
//             of a libcurl long poll
//
// Usage: kecpp-bench-path wire|latency|readers|feeds|links|idle [SECONDS]
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>

#include "benchmarks/Workloads.h"

int main(int argc, char** argv) {
  const char* workload = argc > 1 ? argv[1] : "";
  try {
    if (std::strcmp(workload, "wire") == 0) {
      bench::RunWire();
    } else if (std::strcmp(workload, "latency") == 0) {
      bench::RunLatency();
    } else if (std::strcmp(workload, "readers") == 0) {
      bench::RunReaders();
    } else if (std::strcmp(workload, "feeds") == 0) {
      bench::RunFeeds();
    } else if (std::strcmp(workload, "links") == 0) {
      bench::RunLinks();
    } else if (std::strcmp(workload, "idle") == 0) {
      bench::RunIdle(argc > 2 ? static_cast<unsigned int>(std::atoi(argv[2])) : 10);
    } else {
      std::fprintf(stderr, "Usage: %s wire|latency|readers|feeds|links|idle [SECONDS]\n", argv[0]);
      return 2;
    }
  } catch (const std::exception& e) {
    std::fprintf(stderr, "%s: %s\n", workload, e.what());
    return 1;
  }
  return 0;
}
