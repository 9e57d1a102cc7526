// SPDX-License-Identifier: MIT
//
// The workloads of path.cpp, which says what they measure. Each prints its line of JSON and throws
// std::exception when something does not work.
#ifndef KECPP_BENCHMARKS_WORKLOADS_H
#define KECPP_BENCHMARKS_WORKLOADS_H

namespace bench {

void RunWire();
void RunLatency();
void RunReaders();
void RunFeeds();
void RunLinks();
void RunIdle(unsigned int seconds);

}  // namespace bench

#endif
