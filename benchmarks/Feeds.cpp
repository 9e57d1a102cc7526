// SPDX-License-Identifier: MIT
#include <cstdio>
#include <utility>
#include <vector>

#include "benchmarks/LibraryContender.h"
#include "benchmarks/Measure.h"
#include "benchmarks/Rounds.h"
#include "benchmarks/Workloads.h"
#include "instance/KEChangeFeed.h"

namespace bench {

namespace {

using KE::Instance::KEChange;
using KE::Instance::KEChangeFeed;

constexpr unsigned int kBlock = 1000, kBlocks = 60;

unsigned int TakeAll(KEChangeFeed& feed) {
  std::vector<KEChange> changes(1000);
  unsigned int all = 0;
  for (int taken; (taken = feed.Take(changes.data(), 1000, 0)) > 0;) {
    all += static_cast<unsigned int>(taken);
  }
  return all;
}

// Microseconds of processor time for each change of a block. The machines follow each other in an
// order that the processor cannot guess.
double TimeBlock(LibraryContender& library, unsigned int machines, unsigned int block) {
  std::vector<Text> sets;
  for (unsigned int i = block * kBlock; i < (block + 1) * kBlock; ++i) {
    sets.push_back(ChangeSet(static_cast<unsigned int>(i * 2654435761ULL % machines), i));
  }
  const Clocks begin = Clocks::Now();
  for (Text& set : sets) library.Apply(std::move(set));
  return (Clocks::Now() - begin).cpu / kBlock;
}

// One inventory with a feed and one without, changed in turn. What the feed has is taken between
// two blocks, so that each change of a block is news to it.
void CompareChanges(unsigned int machines) {
  Inventory inventory;
  inventory.machines = machines;
  LibraryContender plain;
  LibraryContenderWithFeed watched;
  plain.Apply(FirstSet(inventory));
  watched.Apply(FirstSet(inventory));
  std::vector<double> without, with, above, take;
  unsigned int taken = TakeAll(watched.Feed());
  for (unsigned int block = 0; block < kBlocks; ++block) {
    without.push_back(TimeBlock(plain, machines, block));
    with.push_back(TimeBlock(watched, machines, block));
    above.push_back(with.back() - without.back());
    const Clocks begin = Clocks::Now();
    taken = TakeAll(watched.Feed());
    take.push_back((Clocks::Now() - begin).cpu / taken);
  }
  std::printf(", \"%u\": {\"without\": %.4f, \"with\": %.4f, \"above\": %.4f, \"take\": %.4f}",
              machines, Median(without), Median(with), Median(above), Median(take));
}

}  // namespace

void RunFeeds() {
  std::printf("{\"workload\": \"feeds\"");
  for (unsigned int machines : {1000U, 100000U}) CompareChanges(machines);
  std::printf("}\n");
}

}  // namespace bench
