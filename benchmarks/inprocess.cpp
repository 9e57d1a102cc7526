// SPDX-License-Identifier: MIT
//
// One contender, one inventory, one process: the workloads that need no network.
//
//   fill     the first set, from its text in memory to the filled store, in a fresh process
//   memory   heap and peak resident size of that
//   walk     every machine and its host, through the store's own iteration
//   step     one changed property of one machine, each time of another one
//   drop     the store is emptied, and the allocator joins the freed blocks, which it does at the
//            next large allocation otherwise
//   refill   the first set again
//
// Usage: kecpp-bench-inprocess CONTENDER MACHINES [MACHINES_PER_HOST]
// Prints one line of JSON. Times are microseconds of processor time ("cpu") and elapsed ("wall");
// of fill, walk, drop and refill for each machine, of step for each step. Without arguments: the
// names of the contenders that were built.
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <utility>
#include <vector>

#include "benchmarks/Contender.h"
#include "benchmarks/Measure.h"

namespace {

using bench::Clocks;

template <typename Work>
Clocks Time(Work work) {
  const Clocks begin = Clocks::Now();
  work();
  return Clocks::Now() - begin;
}

void Print(const char* workload, const Clocks& took, unsigned int count) {
  std::printf(", \"%s\": {\"cpu\": %.4f, \"wall\": %.4f}", workload, took.cpu / count,
              took.wall / count);
}

void Fill(bench::Contender& contender, const bench::Inventory& inventory) {
  const std::size_t heapBefore = bench::HeapInUse();
  const std::size_t residentBefore = bench::Resident::Read().now;
  bench::Text text = bench::FirstSet(inventory);
  contender.Prepare(text);
  const std::size_t length = text.length;
  const Clocks took = Time([&] { contender.Apply(std::move(text)); });
  const std::size_t store = bench::HeapInUse() - heapBefore;
  const std::size_t peak = bench::Resident::Read().peak - residentBefore;
  Print("fill", took, inventory.machines);
  std::printf(", \"text\": %zu, \"store\": %zu, \"peak\": %zu", length, store, peak);
  std::printf(", \"heap\": %.1f, \"beside\": %.1f", static_cast<double>(store) / inventory.machines,
              (static_cast<double>(peak) - static_cast<double>(length)) / inventory.machines);
}

// The machines follow each other in an order that the processor cannot guess.
void Step(bench::Contender& contender, const bench::Inventory& inventory) {
  constexpr unsigned int kSteps = 30000;
  std::vector<bench::Text> sets;
  sets.reserve(kSteps);
  for (unsigned int i = 0; i < kSteps; ++i) {
    sets.push_back(
        bench::ChangeSet(static_cast<unsigned int>(i * 2654435761ULL % inventory.machines), i));
  }
  const Clocks took = Time([&] {
    for (bench::Text& set : sets) contender.Apply(std::move(set));
  });
  Print("step", took, kSteps);
}

void Run(const char* name, bench::Contender& contender, const bench::Inventory& inventory) {
  std::printf("{\"contender\": \"%s\", \"machines\": %u, \"bits\": %zu", name, inventory.machines,
              sizeof(void*) * 8);
  Fill(contender, inventory);
  std::printf(", \"checksum\": \"%016llx\"", static_cast<unsigned long long>(contender.Checksum()));
  std::size_t lengths = 0;
  Print("walk", Time([&] { lengths = contender.Walk(); }), inventory.machines);
  Step(contender, inventory);
  std::printf(", \"lengths\": %zu, \"changed\": \"%016llx\"", lengths,
              static_cast<unsigned long long>(contender.Checksum()));
  const auto drop = [&] {
    contender.Drop();
    bench::JoinFreedBlocks();
  };
  Print("drop", Time(drop), inventory.machines);
  bench::Text text = bench::FirstSet(inventory);
  contender.Prepare(text);
  Print("refill", Time([&] { contender.Apply(std::move(text)); }), inventory.machines);
  std::printf(", \"refilled\": \"%016llx\"}\n",
              static_cast<unsigned long long>(contender.Checksum()));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    for (const std::string& name : bench::ContenderNames()) std::printf("%s\n", name.c_str());
    return 0;
  }
  const auto contender = bench::MakeContender(argv[1]);
  bench::Inventory inventory;
  inventory.machines = static_cast<unsigned int>(std::strtoul(argv[2], nullptr, 10));
  if (argc > 3)
    inventory.machinesPerHost = static_cast<unsigned int>(std::strtoul(argv[3], nullptr, 10));
  if (contender == nullptr || inventory.machines == 0 || inventory.machinesPerHost == 0) {
    std::fprintf(stderr, "No such contender, or no machines.\n");
    return 2;
  }
  try {
    Run(argv[1], *contender, inventory);
  } catch (const std::exception& e) {
    std::fprintf(stderr, "%s: %s\n", argv[1], e.what());
    return 1;
  }
  return 0;
}
