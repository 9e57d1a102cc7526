// SPDX-License-Identifier: MIT
//
// kecpp-fleet-soak [SECONDS [SEED [MEMBERS]]], an endurance run of publishers: simulated daemons
// change all the time while members of a real etcd are killed and stopped, publishers killed,
// stopped and replaced, publishers and a reader cut off from the cluster for up to a minute,
// sessions lost and daemons restarted. Ends with 1 when at rest the cluster or the reader's copy of
// it is not what the daemons are, when an older value ever replaced a newer one, when the reader
// was given an event that cannot be, or when another site was touched; with 77 where there is no
// etcd.
#include <signal.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <list>
#include <map>
#include <random>
#include <thread>

#include "endurance/FleetCopy.h"
#include "endurance/FleetMonitor.h"
#include "endurance/FleetSite.h"
#include "simulator/driver/EtcdCluster.h"

namespace endurance {
namespace {

using Clock = std::chrono::steady_clock;
using kecpp::fleet::EtcdClient;
using kecpp::fleet::EtcdError;
using kecpp::fleet::EtcdOptions;

constexpr int NO_ETCD = 77;
constexpr int CHANGES_PER_SECOND = 1000;
constexpr const char* FOREIGN = "inv/another/machine/vm-1";

EtcdOptions To(const std::string& members) {
  EtcdOptions options;
  options.members = kecpp::fleet::ParseMembers(members);
  return options;
}

class FleetRun {
 public:
  FleetRun(int members, unsigned seed)
      : cluster(members, {"--snapshot-count=5000"}), client(To(cluster.Urls())), random(seed) {
    WriteForeign();
    monitor = std::make_unique<FleetMonitor>(To(cluster.Urls()));
    const int count = members == 1 ? 1 : 2;
    for (int i = 0; i < count; ++i) {
      sites.emplace_back("site/" + std::to_string(i), 200, cluster.Urls(), seed + unsigned(i));
    }
    copy = std::make_unique<FleetCopy>(cluster.Urls());
  }

  // True when everything was right.
  bool Go(double seconds) {
    bool isRight = Rests("at the start");
    KillMembers(1);  // also in the shortest run
    CutAllOff(seconds < 100 ? 1 : 60);
    const auto end = Clock::now() + std::chrono::duration<double>(seconds);
    while (isRight && Clock::now() < end) {
      isRight = Trouble(std::chrono::duration<double>(end - Clock::now()).count());
    }
    for (int member = 0; member < cluster.Members(); ++member) Revive(member);
    isRight = isRight && Rests("at the end") && IsForeignUntouched();
    unsigned long long changes = 0;
    for (const FleetSite& site : sites) changes += site.Changes();
    std::printf("%llu changes, %zu revisions' events watched in %zu streams;", changes,
                monitor->Events(), monitor->Streams());
    std::printf(" the reader had %zu events and read everything %llu times;", copy->Events(),
                copy->Readings());
    for (const auto& [kind, times] : faults) std::printf(" %s %d", kind.c_str(), times);
    std::printf("; longest way to agreement %.1f s\n", longest);
    const std::string wrong = monitor->Wrong() + copy->Wrong();
    std::printf("%s", wrong.c_str());
    return isRight && wrong.empty();
  }

 private:
  void WriteForeign() {
    kecpp::fleet::Transaction put;
    put.Put(FOREIGN, "untouched");
    foreignRevision = client.Commit(put).revision;
  }

  bool IsForeignUntouched() {
    kecpp::fleet::Transaction look;
    look.Get(FOREIGN);
    const auto seen = client.Commit(look);
    const bool isSame = seen.read.front() && seen.read.front()->revision == foreignRevision;
    if (!isSame) std::printf("another site was touched\n");
    return isSame && monitor->HasSeen(seen.revision);
  }

  // One fault, the changes that go on meanwhile, and now and then a look at whether all agree.
  bool Trouble(double left) {
    const double lasts = std::min(left, 1 + double(random() % 3000) / 1000);
    switch (random() % 12) {
      case 0:
      case 1:
        KillMembers(lasts);
        break;
      case 2:
      case 3:
        StopMember(std::min(left, lasts * (cluster.Members() > 1 ? 4 : 1)));
        break;
      case 4:
        ++faults["publisher killed"];
        Any().Publisher().Signal(SIGKILL);
        Work(0.2);
        for (FleetSite& site : sites) {
          if (!site.Publisher().IsRunning()) site.StartPublisher();
        }
        break;
      case 5:
        StopPublisher(lasts * 2);
        break;
      case 6:
        if (!ReplacePublisher()) return false;
        break;
      case 7:
        ++faults["publisher cut off"];
        CutOff(Any().Lines(), std::min(left, lasts * 3));
        break;
      case 8:
        CutReaderOff(std::min(left, lasts * 3));
        break;
      case 9:
        if (!ReplaceWhileCutOff(lasts)) return false;
        break;
      case 10:
        ++faults["daemon restarted"];
        Any().Daemon().Control("restart", {{"pid", 1 + random() % 30000}});
        break;
      default:
        ++faults["session lost"];
        Any().Daemon().Control("session-lost");
    }
    Work(0.5);
    for (FleetSite& site : sites) {
      if (site.Publisher().IsRunning()) continue;
      std::printf("a publisher has ended: %s\n", site.Publisher().Errors().c_str());
      return false;
    }
    return random() % 4 != 0 || Rests("on the way");
  }

  FleetSite& Any() { return *std::next(sites.begin(), long(random() % sites.size())); }

  bool ReplacePublisher() {
    ++faults["publisher replaced"];
    const auto before = Any().ReplacePublisher();
    Work(0.5);
    return HasBeenFenced(*before);
  }

  // What the older one has sent comes late, when another has the site.
  bool ReplaceWhileCutOff(double lasts) {
    ++faults["publisher replaced while cut off"];
    FleetSite& site = Any();
    site.Lines().Set(AnyCut());
    Work(lasts);
    const auto before = site.ReplacePublisher();
    Work(lasts);
    before->lines.Set(driver::Lines::State::whole);
    return HasBeenFenced(*before);
  }

  static bool HasBeenFenced(const Publication& before) {
    if (before.process->Wait() == FleetSite::FENCED) return true;
    std::printf("a publisher did not end when another took its site: %s\n",
                before.process->Errors().c_str());
    return false;
  }

  driver::Lines::State AnyCut() {
    using State = driver::Lines::State;
    constexpr State CUTS[] = {State::silent, State::oneWay, State::resetting};
    return CUTS[random() % 3];
  }

  void CutOff(driver::Lines& lines, double lasts) {
    lines.Set(AnyCut());
    Work(lasts);
    lines.Set(driver::Lines::State::whole);
  }

  // What it misses is compacted meanwhile or not.
  void CutReaderOff(double lasts) {
    ++faults["reader cut off"];
    copy->Cluster().Set(AnyCut());
    Work(lasts);
    if (random() % 2 == 0) Compact();
    copy->Cluster().Set(driver::Lines::State::whole);
  }

  // As far as the monitor has come, which has to see every revision.
  void Compact() try {
    client.Call("kv/compaction", R"({"revision":")" + std::to_string(monitor->Seen()) + "\"}");
    ++faults["compacted"];
  } catch (const EtcdError&) {
    // It was compacted up to there before.
  }

  // Each in another way.
  void CutAllOff(double lasts) {
    ++faults["all cut off"];
    for (FleetSite& site : sites) site.Lines().Set(AnyCut());
    copy->Cluster().Set(AnyCut());
    Work(lasts);
    for (FleetSite& site : sites) site.Lines().Set(driver::Lines::State::whole);
    copy->Cluster().Set(driver::Lines::State::whole);
  }

  void KillMembers(double lasts) {
    const int count = 1 + int(random() % unsigned(cluster.Members()));
    faults["members killed"] += count;
    const int first = int(random() % unsigned(cluster.Members()));
    for (int i = 0; i < count; ++i) cluster.Kill((first + i) % cluster.Members());
    Work(lasts);
    for (int member = 0; member < cluster.Members(); ++member) Revive(member);
  }

  void Revive(int member) {
    if (!cluster.IsRunning(member)) cluster.Start(member);
  }

  void StopMember(double lasts) {
    ++faults["members stopped"];
    const int member = int(random() % unsigned(cluster.Members()));
    cluster.Signal(member, SIGSTOP);
    Work(lasts);
    cluster.Signal(member, SIGCONT);
  }

  void StopPublisher(double lasts) {
    ++faults["publisher stopped"];
    FleetSite& site = Any();
    site.Publisher().Signal(SIGSTOP);
    Work(lasts);
    site.Publisher().Signal(SIGCONT);
  }

  // Changes for so long, at most so many a second.
  void Work(double seconds) {
    const auto begin = Clock::now();
    int done = 0;
    while (true) {
      const std::chrono::duration<double> passed = Clock::now() - begin;
      if (passed.count() >= seconds) return;
      if (done > passed.count() * CHANGES_PER_SECOND) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        continue;
      }
      ++done;
      Any().Change(*monitor);
    }
  }

  bool Rests(const char* when) {
    const auto begin = Clock::now();
    std::string difference;
    const bool agrees = driver::Eventually([&] {
      try {
        difference.clear();
        for (FleetSite& site : sites) difference += site.Difference(client, *copy);
      } catch (const EtcdError& error) {
        difference = error.what();
      }
      return difference.empty();
    });
    longest = std::max(longest, std::chrono::duration<double>(Clock::now() - begin).count());
    if (agrees) return true;
    std::printf("%s the cluster is not what the daemons are: %s\n", when, difference.c_str());
    for (FleetSite& site : sites) std::printf("%s", site.Publisher().Errors().c_str());
    return false;
  }

  driver::EtcdCluster cluster;
  EtcdClient client;
  std::mt19937 random;
  std::unique_ptr<FleetMonitor> monitor;
  std::list<FleetSite> sites;
  std::unique_ptr<FleetCopy> copy;
  std::map<std::string, int> faults;
  std::int64_t foreignRevision = 0;
  double longest = 0;
};

int RunFleet(int argc, char** argv) {
  const double seconds = argc > 1 ? std::atof(argv[1]) : 120;
  const auto seed = static_cast<unsigned>(argc > 2 ? std::atol(argv[2]) : std::random_device()());
  const int members = argc > 3 ? std::atoi(argv[3]) : 3;
  if (driver::EtcdCluster::Programs().empty()) {
    std::printf("there is no etcd: skipped\n");
    return NO_ETCD;
  }
  std::printf("seed %u, %d members, %.0f s\n", seed, members, seconds);
  std::fflush(stdout);
  return FleetRun(members, seed).Go(seconds) ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace
}  // namespace endurance

int main(int argc, char** argv) try {
  return endurance::RunFleet(argc, argv);
} catch (const std::exception& error) {
  std::printf("the run broke: %s\n", error.what());
  return EXIT_FAILURE;
}
