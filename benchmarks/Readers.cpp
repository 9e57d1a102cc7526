// SPDX-License-Identifier: MIT
#include <atomic>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <string>
#include <thread>
#include <utility>
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
  double turns = 0;        // in a second, of all threads
  double longestWait = 0;  // for the lock, in microseconds
  double changes = 0;      // of the writer, in a second
};

using KE::Instance::KEDataCache;
using Action = std::size_t (*)(KEDataCache& machines, KELib::KEString& key);

std::size_t LookUp(KEDataCache& machines, KELib::KEString& key) {
  KELib::Stub::KEStubRef ref;
  machines.GetVal(key, ref);
  return static_cast<KE::Stub::ZORBEL_VMComputerSystem*>(ref.GetData())->ElementName.Length();
}

std::size_t Iterate(KEDataCache& machines, KELib::KEString&) {
  std::size_t lengths = 0;
  for (auto it = machines.Iterator(); !it.End(); ++it) {
    lengths += static_cast<KE::Stub::ZORBEL_VMComputerSystem&>(*it->value).ElementName.Length();
  }
  return lengths;
}

// Goes on until it is stopped, with machines in an order that the processor cannot guess.
Reading Repeat(Action action, KEDataCache& machines, unsigned int seed,
               const std::atomic<bool>& stop) {
  std::vector<KELib::KEString> keys;
  for (unsigned int i = 0; i < kMachines; ++i) keys.emplace_back(MachineId(i).c_str());
  Reading reading;
  std::size_t lengths = 0;
  while (!stop.load(std::memory_order_relaxed)) {
    seed = seed * 1664525U + 1013904223U;
    KELib::KEString& key = keys[(seed >> 8) % kMachines];
    const long long asked = NanosecondsNow();
    KELib::KEMutexGuard guard(machines.GetMutex());
    const double waited = static_cast<double>(NanosecondsNow() - asked) / 1e3;
    lengths += action(machines, key);
    if (waited > reading.longestWait) reading.longestWait = waited;
    ++reading.turns;
  }
  if (lengths == 0) reading.turns = 0;
  return reading;
}

enum class Writer { none, unhurried, atFullSpeed };

// The changes are made beforehand, so that the writer does nothing but apply them: 500 at a time,
// or one every hundredth of a second. Returns how many there were in a second.
double Write(LibraryContender& library, Writer writer, const std::atomic<bool>& stop) {
  constexpr unsigned int kTexts = 20;
  constexpr timespec kPause{0, 10000000};
  const unsigned int perText = writer == Writer::atFullSpeed ? 500 : 1;
  std::vector<Text> texts;
  for (unsigned int i = 0; i < kTexts; ++i) {
    texts.push_back(ChangeSets(i * perText, perText, i));
  }
  unsigned int turn = 0;
  const long long begin = NanosecondsNow();
  for (; !stop; ++turn) {
    if (writer == Writer::unhurried) nanosleep(&kPause, nullptr);
    const Text& text = texts[turn % kTexts];
    Text copy;
    copy.length = text.length;
    copy.characters.reset(new char[text.length + 1]);
    std::memcpy(copy.characters.get(), text.characters.get(), text.length + 1);
    library.Apply(std::move(copy));
  }
  return turn * perText * 1e9 / static_cast<double>(NanosecondsNow() - begin);
}

Reading Read(LibraryContender& library, Action action, unsigned int threads, Writer writer) {
  KELib::KEString type("ZORBEL_VMComputerSystem");
  KEDataCache& machines = *library.Cache().GetDataCache(type);
  std::atomic<bool> stop{false};
  std::vector<Reading> readings(threads);
  std::vector<std::thread> all;
  for (unsigned int i = 0; i < threads; ++i) {
    all.emplace_back([&, i] { readings[i] = Repeat(action, machines, i + 1, stop); });
  }
  Reading sum;
  if (writer != Writer::none) {
    all.emplace_back([&] { sum.changes = Write(library, writer, stop); });
  }
  const timespec run{0, kRunMilliseconds * 1000000};
  nanosleep(&run, nullptr);
  stop = true;
  for (std::thread& thread : all) thread.join();
  for (const Reading& reading : readings) {
    sum.turns += reading.turns * 1000 / kRunMilliseconds;
    if (reading.longestWait > sum.longestWait) sum.longestWait = reading.longestWait;
  }
  return sum;
}

void Compare(LibraryContender& library, const char* name, Action action) {
  std::printf(", \"%s\": {", name);
  for (unsigned int threads = 1; threads <= 4; ++threads) {
    const Reading alone = Read(library, action, threads, Writer::none);
    const Reading beside = Read(library, action, threads, Writer::atFullSpeed);
    const Reading unhurried = Read(library, action, threads, Writer::unhurried);
    std::printf(
        "%s\"%u\": {\"alone\": %.0f, \"beside\": %.0f, \"share\": %.3f, \"longestWait\": %.1f, "
        "\"changes\": %.0f, \"longestWaitUnhurried\": %.1f}",
        threads > 1 ? ", " : "", threads, alone.turns, beside.turns, beside.turns / alone.turns,
        beside.longestWait, beside.changes, unhurried.longestWait);
  }
  std::printf("}");
}

}  // namespace

void RunReaders() {
  Inventory inventory;
  inventory.machines = kMachines;
  LibraryContender library;
  library.Apply(FirstSet(inventory));
  std::printf("{\"workload\": \"readers\", \"changesAlone\": %.0f",
              Read(library, LookUp, 0, Writer::atFullSpeed).changes);
  Compare(library, "lookUps", LookUp);
  Compare(library, "iterations", Iterate);
  std::printf("}\n");
}

}  // namespace bench
