// SPDX-License-Identifier: MIT
//
// Freeing a service instance is bounded at every moment of its life, and leaves nothing behind.
// Each moment's median is printed; KECPP_SHUTDOWN_ROUNDS says how often it is measured.
#include <gtest/gtest.h>
#include <kecpp.h>
#include <malloc.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <ostream>
#include <tuple>
#include <vector>

#include "service/call/MgmtdWatchSeams.h"
#include "simulator/driver/ProcessSample.h"
#include "simulator/driver/Simulator.h"
#include "support/Watches.h"
#include "torture/FailingCalls.h"

namespace shutdowntest {
namespace {

using driver::Eventually;
using driver::Json;
using driver::Simulator;
using Clock = std::chrono::steady_clock;

constexpr long PROMISED_LIVE_MS = 2000, PROMISED_HANGING_MS = 5000;
constexpr int MOST_ROUNDS = 5;  // a loaded machine breaks no promise, but not five times in a row

// One service instance of the library in this process.
class Client {
 public:
  // Connects and logs in; `timeout` in seconds is the configuration's.
  Client(Simulator& simulator, int timeout) : manager(KE::Service::GetServiceManagerInstance()) {
    KELib::Logging::GetDefaultLogger()->SetLevelByName("error");
    std::string config = simulator.Config();
    config.replace(config.find(">60<"), 4, ">" + std::to_string(timeout) + "<");
    instance = manager->GetServiceInstance(config.c_str(), KE::Service::DEFAULT_CONFIG_CONTENT);
    if (instance == nullptr) throw std::runtime_error("no service instance");
    sync = instance->GetSession()->GetDataSync();
  }
  ~Client() {
    if (instance != nullptr) FreeMilliseconds();
    KE::Service::FreeServiceManagerInstance();
  }
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  KE::Service::KEDataSync& Sync() { return *sync; }

  // Sets up the watch of hosts and machines. False when it was not to be.
  bool Watch() {
    try {
      return WatchSystems(*instance, *sync) != nullptr;
    } catch (const KELib::Throwable&) {
      return false;
    }
  }
  // The same on a thread of its own, which freeing lets go of.
  void WatchElsewhere() {
    elsewhere = std::async(std::launch::async, [this] { return Watch(); });
  }

  // Frees the instance and waits for the other thread. Returns how long the freeing took.
  long FreeMilliseconds() {
    const auto begin = Clock::now();
    manager->FreeServiceInstance(instance);
    const auto took = Clock::now() - begin;
    instance = nullptr;
    if (elsewhere.valid()) elsewhere.get();
    return static_cast<long>(std::chrono::duration_cast<std::chrono::milliseconds>(took).count());
  }

 private:
  KE::Service::KEServiceInstManager* const manager;
  KE::Service::KEServiceInst* instance = nullptr;
  KE::Service::KEDataSync* sync = nullptr;
  std::future<bool> elsewhere;
};

// Threads, descriptors and blocks of operator new that the process has. Equal before and after,
// once the last thread is gone.
using Belongings = std::array<long, 3>;
Belongings CountBelongings() {
  const ProcessSample now = SampleOf("/proc/self");
  return {now.threads, now.descriptors, torture::CountLiving().blocks};
}

void ExpectToHave(const Belongings& wanted) {
  Eventually([&] { return CountBelongings() == wanted; });
  EXPECT_EQ(CountBelongings(), wanted);
}

void Order(Simulator& simulator, const char* method, const char* kind, int count = 1) {
  simulator.Control("fault",
                    {{"method", method}, {"kind", kind}, {"count", count}, {"delayMs", 600000}});
}

// Somebody watches, the fault `kind` meets the method if one is given, and the call is under way.
bool ReachCall(Simulator& simulator, Client& client, const char* method, const char* kind) {
  if (kind != nullptr) Order(simulator, method, kind);
  client.WatchElsewhere();
  return Eventually([&] { return simulator.Stats()["calls"].value(method, 0) > 0; });
}

bool ReachWait(Simulator& simulator, Client& client) {
  return client.Watch() && Eventually([&] { return simulator.Stats()["waits"] == 1; });
}

// The loop's second wait fails; then it looks for a restarted daemon, twice with ten seconds
// between.
bool ReachDaemonWatch(Simulator& simulator, Client& client) {
  if (!client.Watch()) return false;
  Order(simulator, "WaitForUpdates", "http500", 1000);
  simulator.Control("machine",
                    {{"do", "remove"}, {"id", simulator.Truth()["machines"][0]["Name"]}});
  return Eventually([&] {
    KE::Service::KESyncStatus status;
    client.Sync().GetStatus(status);
    return status.consecutiveFailures > 0;
  });
}

struct Moment {
  const char* name;
  int machines;
  bool (*reach)(Simulator&, Client&);  // false when the client did not get there
};
void PrintTo(const Moment& moment, std::ostream* out) {
  *out << moment.name;
}

const Moment MOMENTS[] = {
    {"waiting for updates", 10, ReachWait},
    {"inside CreateFilter", 10,
     [](Simulator& s, Client& c) { return ReachCall(s, c, "CreateFilter", "hang"); }},
    {"first cycle of another thread", 10,
     [](Simulator& s, Client& c) { return ReachCall(s, c, "WaitForUpdates", "hang"); }},
    {"applying the first answer", 20000,
     [](Simulator& s, Client& c) { return ReachCall(s, c, "WaitForUpdates", nullptr); }},
    {"ten-second daemon watch", 10, ReachDaemonWatch}};

int Rounds() {
  const char* rounds = std::getenv("KECPP_SHUTDOWN_ROUNDS");
  return rounds != nullptr ? std::atoi(rounds) : 1;
}

class Freeing : public testing::TestWithParam<std::tuple<Moment, bool, int>> {};

TEST_P(Freeing, IsBoundedAndLeavesNothing) {
  const auto& [moment, hangs, timeout] = GetParam();
  const driver::TemporaryFolder folder;
  const std::string pidFile = folder.path + "/pid";
  const long promised = hangs ? PROMISED_HANGING_MS : PROMISED_LIVE_MS;
  std::vector<long> times;
  times.reserve(1000);
  const auto isKept = [&] { return *std::min_element(times.begin(), times.end()) < promised; };
  // The first one is not counted: it makes what is made once and kept.
  for (int round = -1; round < Rounds() || (round < MOST_ROUNDS && !isKept()); ++round) {
    Simulator simulator({"--machines", std::to_string(moment.machines), "--pid-file", pidFile});
    KE::Service::GetMgmtdWatchSeams().pidFile = pidFile.c_str();
    const Belongings before = CountBelongings();
    {
      Client client(simulator, timeout);
      EXPECT_TRUE(moment.reach(simulator, client)) << simulator.Stats();
      if (hangs && round >= 0) Order(simulator, "*", "hang", 1000);
      times.push_back(client.FreeMilliseconds());
    }
    KE::Service::ResetMgmtdWatch();  // the next simulator has another process id
    if (round < 0) {
      times.clear();
      continue;
    }
    ExpectToHave(before);
  }
  EXPECT_TRUE(isKept());
  std::sort(times.begin(), times.end());
  std::printf("%s%s, time-out %d: median %ld ms, longest %ld ms of %zu\n", moment.name,
              hangs ? ", daemon hangs" : "", timeout, times[times.size() / 2], times.back(),
              times.size());
}

INSTANTIATE_TEST_SUITE_P(Moments, Freeing,
                         testing::Combine(testing::ValuesIn(MOMENTS), testing::Bool(),
                                          testing::Values(60, 0)),
                         [](const auto& made) { return std::to_string(made.index); });

// Bytes that the process has from the allocator, those of foreign libraries included; 0 under a
// sanitizer.
long AllocatedBytes() {
#if __GLIBC_PREREQ(2, 33)
  return static_cast<long>(mallinfo2().uordblks);
#else
  return mallinfo().uordblks;
#endif
}

TEST(Shutdown, TwoHundredLivesAreFlat) {
  Simulator simulator({});
  Belongings early{};
  long earlyBytes = 0;
  for (int life = 0; life < 200; ++life) {
    {
      Client client(simulator, 60);
      ASSERT_TRUE(client.Watch());
    }
    if (life != 19) continue;
    early = CountBelongings();
    earlyBytes = AllocatedBytes();
  }
  ExpectToHave(early);
  // The allocator's own room grows at first and then no more: 24 KB after 200 lives, 46 KB after
  // 1000. Half a kilobyte lost in each life would show.
  EXPECT_LT(AllocatedBytes() - earlyBytes, 90 * 1024);
}

}  // namespace
}  // namespace shutdowntest
