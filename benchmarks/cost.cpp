// SPDX-License-Identifier: MIT
//
// What applying costs in countable things, for a guard that no busy machine can disturb: a first
// fill of 1,000 machines and 1,000 single changes, without a change feed or with one from which
// all is taken that came before. scripts/check-cost compares with the limits.
//
// Usage: kecpp-bench-cost [feed]
// Prints the allocations of a machine and of a change. Under callgrind, with --toggle-collect for
// MeasuredFill or MeasuredChanges, the instructions are counted.
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include "benchmarks/LibraryContender.h"

namespace {

constexpr unsigned int kMachines = 1000;

unsigned long allocations = 0;

void* Allocate(std::size_t size) {
  ++allocations;
  if (void* block = std::malloc(size)) return block;
  throw std::bad_alloc();
}

}  // namespace

// These replace the ones that the library would otherwise call.
void* operator new(std::size_t size) {
  return Allocate(size);
}
void* operator new[](std::size_t size) {
  return Allocate(size);
}
void operator delete(void* block) noexcept {
  std::free(block);
}
void operator delete[](void* block) noexcept {
  std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
  std::free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
  std::free(block);
}

// Outside a namespace and with C linkage: the guard names them.
extern "C" __attribute__((noinline)) void MeasuredFill(bench::Contender& contender,
                                                       bench::Text& text) {
  contender.Apply(std::move(text));
}

extern "C" __attribute__((noinline)) void MeasuredChanges(bench::Contender& contender,
                                                          std::vector<bench::Text>& changes) {
  for (bench::Text& change : changes) contender.Apply(std::move(change));
}

int main(int argc, char**) {
  bench::Inventory inventory;
  inventory.machines = kMachines;
  const bool hasFeed = argc > 1;
  const char* const suffix = hasFeed ? "-with-feed" : "";
  bench::LibraryContender library;
  std::unique_ptr<KE::Instance::KEChangeFeed> feed(hasFeed ? library.Sync().OpenChangeFeed()
                                                           : nullptr);
  bench::Text first = bench::FirstSet(inventory);
  unsigned long before = allocations;
  MeasuredFill(library, first);
  std::printf("allocations-per-machine%s %.3f\n", suffix,
              static_cast<double>(allocations - before) / kMachines);
  std::vector<bench::Text> changes;
  for (unsigned int i = 0; i < kMachines; ++i) changes.push_back(bench::ChangeSet(i, i));
  library.Apply(bench::ChangeSet(0, 0));  // the texts that are kept for reuse find their sizes
  KE::Instance::KEChange entry;
  while (feed != nullptr && feed->Take(&entry, 1, 0) > 0) continue;
  before = allocations;
  MeasuredChanges(library, changes);
  std::printf("allocations-per-change%s %.3f\n", suffix,
              static_cast<double>(allocations - before) / kMachines);
  return 0;
}
