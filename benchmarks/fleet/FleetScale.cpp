// SPDX-License-Identifier: MIT
//
// fleet_scale [SITES [MACHINES [RATE [SECONDS [MEMBERS]]]]], 50, 2000, 2000, 20 and 3 without: many
// simulated daemons, in one process, with a publisher each, and one kecpp::Fleet of all.
//
//   first publication  from the start of the first publisher until every site is complete
//   delay              from the order of a change to the daemon until the follower has its event
//   processor time     of all programs of a kind together, for each change
//
// RATE changes a second are ordered over all sites. A change that was overtaken by a later one of
// the same machine has no event of its own and no delay. Ends with 77 where there is no etcd.
#include <kecpp/fleet.h>
#include <time.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <numeric>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "fleet/Documents.h"
#include "fleet/EtcdClient.h"
#include "fleet/Keys.h"
#include "simulator/driver/EtcdCluster.h"
#include "simulator/driver/ProcessSample.h"
#include "simulator/driver/Simulator.h"

namespace {

using namespace kecpp::fleet;
using Clock = std::chrono::steady_clock;

constexpr int NO_ETCD = 77;
constexpr std::size_t MOST_CHANGES = 1000000;
constexpr int ORDERERS = 4;  // threads that order changes

double Seconds(Clock::duration time) {
  return std::chrono::duration<double>(time).count();
}

double ThreadSeconds() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

double ProcessSeconds(pid_t pid) {
  return SampleOf("/proc/" + std::to_string(pid)).cpuSeconds;
}

// Follows all objects and notes when each numbered name arrives.
class Reader {
 public:
  explicit Reader(const std::string& members)
      : ordered(MOST_CHANGES), fleet({members}), follower(fleet.Follow()) {
    while (!follower.Next().empty()) continue;
    thread = std::thread([this] { Run(); });
  }
  ~Reader() {
    follower.Close();
    thread.join();
  }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;

  // The number of a change that is ordered now.
  std::size_t Order() {
    const std::size_t number = next++;
    ordered.at(number) = Clock::now().time_since_epoch().count();
    return number;
  }
  std::size_t Ordered() const { return next; }

  std::vector<double> Delays() const {
    const std::lock_guard<std::mutex> lock(mutex);
    return delays;
  }

 private:
  void Run() {
    while (!follower.Closed()) {
      if (!follower.Wait(std::chrono::seconds(1))) continue;
      const auto changes = follower.Next();
      const auto now = Clock::now().time_since_epoch();
      for (const kecpp::FleetChange& change : changes) Take(change, now);
    }
  }

  void Take(const kecpp::FleetChange& change, Clock::duration now) {
    if (change.kind != kecpp::Kind::machine) return;
    const auto machine = fleet.FindMachine(change.site, change.key);
    if (!machine || machine->name.compare(0, 2, "n-") != 0) return;
    // Zero: an entry before this one had it already.
    const Clock::duration since(ordered.at(std::stoul(machine->name.substr(2))).exchange(0));
    if (since.count() == 0) return;
    const std::lock_guard<std::mutex> lock(mutex);
    delays.push_back(Seconds(now - since));
  }

  std::atomic<std::size_t> next{0};
  std::vector<std::atomic<Clock::rep>> ordered;
  kecpp::Fleet fleet;
  kecpp::FleetFollower follower;
  mutable std::mutex mutex;
  std::vector<double> delays;  // guarded by `mutex`
  std::thread thread;
};

struct Site {
  std::string name;
  driver::Simulator daemon;
  std::unique_ptr<driver::ChildProcess> publisher;
};

std::size_t CompleteSites(EtcdClient& client) {
  std::size_t complete = 0;
  ReadPrefix(client, kSites, [&](KeyValue&& entry) {
    const auto document = ReadSite(entry.value);
    complete += document && document->isComplete ? 1 : 0;
  });
  return complete;
}

// The transactions of all publishers: the cluster's revision grows by one with each.
std::int64_t Revision(EtcdClient& client) {
  return ReadRevision(client.Read("kv/range", R"({"key":"YQ=="})"));
}

// Orders changes of the sites whose number leaves `part` when it is divided by ORDERERS.
void OrderChanges(std::vector<Site>& sites, std::size_t part, int machines, double rate,
                  double seconds, Reader& reader) {
  std::mt19937 random(static_cast<unsigned>(part));
  const auto begin = Clock::now();
  std::size_t done = 0;
  while (Seconds(Clock::now() - begin) < seconds) {
    if (static_cast<double>(done) > Seconds(Clock::now() - begin) * rate) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
      continue;
    }
    ++done;
    const std::size_t which =
        part + ORDERERS * (random() % ((sites.size() + ORDERERS - 1 - part) / ORDERERS));
    const std::string machine =
        "vm-" + std::to_string(1 + random() % static_cast<unsigned>(machines));
    sites[which].daemon.SetMachine(machine, "name", "n-" + std::to_string(reader.Order()));
  }
}

// Processor time of the programs so far, by kind.
struct Costs {
  Costs(const driver::EtcdCluster& cluster, const std::vector<Site>& sites)
      : daemons(ProcessSeconds(sites.front().daemon.Pid())), here(ProcessSeconds(getpid())) {
    for (int i = 0; i < cluster.Members(); ++i) members += ProcessSeconds(cluster.Pid(i));
    for (const Site& site : sites) publishers += ProcessSeconds(site.publisher->Pid());
  }
  double members = 0;
  double publishers = 0;
  double daemons = 0;
  double here = 0;
};

// Orders changes for so long; the processor time that this takes by itself.
double OrderAll(std::vector<Site>& sites, int machines, double rate, double seconds,
                Reader& reader) {
  std::vector<std::thread> orderers;
  std::vector<double> took(ORDERERS);
  for (std::size_t part = 0; part < ORDERERS; ++part) {
    orderers.emplace_back([&, part] {
      OrderChanges(sites, part, machines, rate / ORDERERS, seconds, reader);
      took[part] = ThreadSeconds();
    });
  }
  for (std::thread& orderer : orderers) orderer.join();
  return std::accumulate(took.begin(), took.end(), 0.0);
}

void Report(const Reader& reader, double seconds) {
  std::vector<double> delays = reader.Delays();
  if (delays.empty()) throw std::runtime_error("no change has arrived");
  std::sort(delays.begin(), delays.end());
  const auto at = [&](double part) {
    return 1000 * delays[static_cast<std::size_t>(part * static_cast<double>(delays.size() - 1))];
  };
  std::printf(
      "%.0f changes a second, %zu arrived: delay median %.1f ms, 99 %% %.1f ms, most %.1f ms\n",
      static_cast<double>(reader.Ordered()) / seconds, delays.size(), at(0.5), at(0.99), at(1));
}

int Argument(int argc, char** argv, int which, int otherwise) {
  return argc > which ? std::max(1, std::atoi(argv[which])) : otherwise;
}

void Measure(int argc, char** argv) {
  const int count = std::max(ORDERERS, Argument(argc, argv, 1, 50));
  const int machines = Argument(argc, argv, 2, 2000);
  const double rate = Argument(argc, argv, 3, 2000);
  const double seconds = Argument(argc, argv, 4, 20);
  driver::EtcdCluster cluster(Argument(argc, argv, 5, 3));
  EtcdOptions options;
  options.members = ParseMembers(cluster.Urls());
  EtcdClient client(options);
  std::vector<Site> sites;
  for (driver::Simulator& daemon : driver::Simulator::Several(
           count, {"--hosts", "10", "--machines", std::to_string(machines)})) {
    daemon.KeepConnection();
    sites.push_back({"site-" + std::to_string(sites.size()), std::move(daemon), nullptr});
  }
  const auto begin = Clock::now();
  for (Site& site : sites) {
    site.publisher = std::make_unique<driver::ChildProcess>(std::vector<std::string>{
        KECPP_PUBLISH_PROGRAM, "--config", site.daemon.ConfigFile(site.daemon.Config()), "--site",
        site.name, "--to", cluster.Urls()});
  }
  while (CompleteSites(client) < sites.size()) {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
  const double first = Seconds(Clock::now() - begin);
  std::printf("first publication: %d sites of %d machines in %.1f s, %.0f objects a second\n",
              count, machines, first, count * (machines + 20.0) / first);
  std::fflush(stdout);

  Reader reader(cluster.Urls());
  const Costs before(cluster, sites);
  const std::int64_t revision = Revision(client);
  const double ordering = OrderAll(sites, machines, rate, seconds, reader);
  std::this_thread::sleep_for(std::chrono::seconds(2));
  const Costs after(cluster, sites);
  const auto changes = static_cast<double>(reader.Ordered());
  const auto each = [&](double time) { return 1e6 * time / changes; };
  std::printf("%.2f changes in a transaction\n",
              changes / static_cast<double>(Revision(client) - revision));
  std::printf(
      "processor time a change: members %.0f us, publishers %.0f us, daemons %.0f us, the reader "
      "%.0f us, ordering %.0f us\n",
      each(after.members - before.members), each(after.publishers - before.publishers),
      each(after.daemons - before.daemons), each(after.here - before.here - ordering),
      each(ordering));
  Report(reader, seconds);
  std::size_t troubled = 0;
  for (const Site& site : sites) {
    troubled += site.publisher->Errors().find("trying again") != std::string::npos ? 1 : 0;
  }
  if (troubled != 0) std::printf("%zu publishers lost the cluster meanwhile\n", troubled);
}

}  // namespace

int main(int argc, char** argv) try {
  if (driver::EtcdCluster::Programs().empty()) return NO_ETCD;
  Measure(argc, argv);
  return EXIT_SUCCESS;
} catch (const std::exception& error) {
  std::fprintf(stderr, "%s\n", error.what());
  return EXIT_FAILURE;
}
