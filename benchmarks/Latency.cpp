// SPDX-License-Identifier: MIT
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "benchmarks/BarePost.h"
#include "benchmarks/ByteServer.h"
#include "benchmarks/Measure.h"
#include "benchmarks/PublicPath.h"
#include "benchmarks/Rounds.h"
#include "benchmarks/Workloads.h"
#include "foundation/KEMutexGuard.h"
#include "instance/KETypeCache.h"
#include "stub/classes/ZORBEL_VMComputerSystem.h"

namespace bench {

namespace {

constexpr unsigned int kChanges = 400;

double Microseconds(long long sent) {
  return static_cast<double>(NanosecondsNow() - sent) / 1e3;
}

double BareLatency(const std::string& url) {
  BarePost post(url);
  std::vector<double> latencies;
  for (unsigned int i = 0; i < kChanges; ++i) {
    post.Call("WaitForUpdates", "<version>17</version>");
    const char* value = std::strstr(post.Body(), "<val>");
    latencies.push_back(Microseconds(std::atoll(value + 5)));
  }
  return Median(latencies);
}

// The moment in the machine's name; 0 in its first name.
long long SentAt(KE::Instance::KEDataCache& machines) {
  KELib::KEMutexGuard guard(machines.GetMutex());
  KELib::KEString key(MachineId(0).c_str());
  KELib::Stub::KEStubRef ref;
  machines.GetVal(key, ref);
  const auto* machine = static_cast<KE::Stub::ZORBEL_VMComputerSystem*>(ref.GetData());
  return std::atoll(machine->ElementName.Cstr());
}

double LibraryLatency(const std::string& url) {
  PublicPath path(url);
  path.Watch();
  KELib::KEString type("ZORBEL_VMComputerSystem");
  KE::Instance::KEDataCache& machines = *path.Sync().GetCache()->GetDataCache(type);
  std::vector<double> latencies;
  unsigned long long seen = 0;
  while (latencies.size() < kChanges && path.Sync().WaitForChange(seen, 2000)) {
    const long long sent = SentAt(machines);
    if (sent > 0) latencies.push_back(Microseconds(sent));
    if (seen > kChanges) break;  // the first fill counts as one
  }
  return Median(latencies);
}

// Milliseconds of processor time that the process spends in a minute, by some seconds of one.
double QuietMinute(unsigned int seconds) {
  const timespec settle{0, 200000000};
  nanosleep(&settle, nullptr);
  const Clocks begin = Clocks::Now();
  const timespec quiet{static_cast<time_t>(seconds), 0};
  nanosleep(&quiet, nullptr);
  return (Clocks::Now() - begin).cpu / 1000 * 60 / seconds;
}

// The same while a thread waits by libcurl alone for a reply that does not come.
double BareQuietMinute(const std::string& url, unsigned int seconds) {
  std::thread waiting([&url] {
    try {
      BarePost(url).Call("WaitForUpdates", "<version>17</version>");
    } catch (const std::runtime_error&) {
      // The server ends a cancelled wait without a reply.
    }
  });
  const double spent = QuietMinute(seconds);
  BarePost(url).Call("CancelWaitForUpdates", "");
  waiting.join();
  return spent;
}

}  // namespace

void RunLatency() {
  Inventory inventory;
  inventory.machines = 1000;
  const ByteServer forBare(inventory, kChanges), forLibrary(inventory, kChanges);
  const double bare = BareLatency(forBare.Url());
  const double library = LibraryLatency(forLibrary.Url());
  std::printf("{\"workload\": \"latency\", \"bare\": %.1f, \"library\": %.1f, \"above\": %.1f}\n",
              bare, library, library - bare);
}

void RunIdle(unsigned int seconds) {
  Inventory inventory;
  inventory.machines = 1000;
  const ByteServer forBare(inventory, 0), forLibrary(inventory, 0);
  const double bare = BareQuietMinute(forBare.Url(), seconds);
  PublicPath path(forLibrary.Url());
  path.Watch();
  const double library = QuietMinute(seconds);
  std::printf("{\"workload\": \"idle\", \"seconds\": %u, \"milliseconds\": %.3f, \"bare\": %.3f}\n",
              seconds, library, bare);
}

}  // namespace bench
