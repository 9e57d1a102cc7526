// SPDX-License-Identifier: MIT
#include <atomic>
#include <cstdio>
#include <ctime>
#include <string>
#include <thread>
#include <vector>

#include "benchmarks/ByteServer.h"
#include "benchmarks/LibraryContender.h"
#include "benchmarks/Measure.h"
#include "benchmarks/Workloads.h"
#include "foundation/KEMutexGuard.h"
#include "instance/KETypeCache.h"
#include "stub/classes/ZORBEL_VMComputerSystem.h"

namespace bench {

namespace {

constexpr unsigned int kMachines = 10000;
constexpr long kRunMilliseconds = 300;

struct Reading {
  double lookUps = 0;      // in a second, of all threads
  double longestWait = 0;  // microseconds
};

// Look-ups of machines in an order that the processor cannot guess, until told to stop.
Reading LookUp(KE::Instance::KEDataCache& machines, unsigned int seed,
               const std::atomic<bool>& stop) {
  Reading reading;
  std::size_t lengths = 0;
  while (!stop.load(std::memory_order_relaxed)) {
    seed = seed * 1664525U + 1013904223U;
    KELib::KEString key(MachineId((seed >> 8) % kMachines).c_str());
    const long long asked = NanosecondsNow();
    KELib::KEMutexGuard guard(machines.GetMutex());
    const double waited = static_cast<double>(NanosecondsNow() - asked) / 1e3;
    KELib::Stub::KEStubRef ref;
    machines.GetVal(key, ref);
    lengths += static_cast<KE::Stub::ZORBEL_VMComputerSystem*>(ref.GetData())->ElementName.Length();
    if (waited > reading.longestWait) reading.longestWait = waited;
    ++reading.lookUps;
  }
  if (lengths == 0) reading.lookUps = 0;
  return reading;
}

Reading Read(LibraryContender& library, unsigned int threads, bool besideWriter) {
  KELib::KEString type("ZORBEL_VMComputerSystem");
  KE::Instance::KEDataCache& machines = *library.Cache().GetDataCache(type);
  std::atomic<bool> stop{false};
  std::vector<Reading> readings(threads);
  std::vector<std::thread> all;
  for (unsigned int i = 0; i < threads; ++i) {
    all.emplace_back([&, i] { readings[i] = LookUp(machines, i + 1, stop); });
  }
  std::thread writer([&] {
    for (unsigned int turn = 0; besideWriter && !stop; ++turn) {
      library.Apply(ChangeSets(turn * 500 % kMachines, 500, turn));
    }
  });
  const timespec run{0, kRunMilliseconds * 1000000};
  nanosleep(&run, nullptr);
  stop = true;
  for (std::thread& thread : all) thread.join();
  writer.join();
  Reading sum;
  for (const Reading& reading : readings) {
    sum.lookUps += reading.lookUps * 1000 / kRunMilliseconds;
    if (reading.longestWait > sum.longestWait) sum.longestWait = reading.longestWait;
  }
  return sum;
}

}  // namespace

void RunReaders() {
  Inventory inventory;
  inventory.machines = kMachines;
  LibraryContender library;
  library.Apply(FirstSet(inventory));
  std::printf("{\"workload\": \"readers\"");
  for (unsigned int threads = 1; threads <= 4; ++threads) {
    const Reading alone = Read(library, threads, false);
    const Reading beside = Read(library, threads, true);
    if (threads == 1) std::printf(", \"share\": %.3f", beside.lookUps / alone.lookUps);
    std::printf(", \"%u\": {\"alone\": %.0f, \"beside\": %.0f, \"longestWait\": %.1f}", threads,
                alone.lookUps, beside.lookUps, beside.longestWait);
  }
  std::printf("}\n");
}

}  // namespace bench
