// SPDX-License-Identifier: MIT
//
// fleet_scale [SITES [MACHINES [RATE [SECONDS [MEMBERS]]]]], 50, 2000, 2000, 20 and 3 without: many
// simulated daemons with a publisher each, and one follower of all.
//
//   first publication  from the start of the first publisher until every site is complete
//   delay              from the order of a change to the daemon until the follower has its event
//
// RATE changes a second are ordered over all sites. A change that was overtaken by a later one of
// the same machine has no event of its own and no delay. Ends with 77 where there is no etcd.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <list>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "fleet/Documents.h"
#include "fleet/EtcdClient.h"
#include "fleet/Keys.h"
#include "simulator/driver/EtcdCluster.h"
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

// Follows all objects and notes when each numbered name arrives.
class Follower {
 public:
  explicit Follower(const EtcdOptions& options)
      : ordered(MOST_CHANGES), client(options), thread([this] { Run(); }) {}
  ~Follower() {
    isEnding = true;
    client.Cut();
    thread.join();
  }
  Follower(const Follower&) = delete;
  Follower& operator=(const Follower&) = delete;

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
    while (!isEnding) {
      try {
        client.Stream("watch", R"({"create_request":{"key":"aW52Lw==","range_end":"aW52MA=="}})",
                      std::chrono::seconds(60), [this](const nlohmann::json& line) {
                        Take(line);
                        return !isEnding;
                      });
      } catch (const EtcdError& error) {
        if (!isEnding) std::fprintf(stderr, "the follower: %s\n", error.what());
      }
    }
  }

  void Take(const nlohmann::json& line) {
    const auto found = line.find("events");
    if (found == line.end()) return;
    const auto now = Clock::now();
    for (const nlohmann::json& event : *found) {
      const KeyValue entry = ReadKeyValue(event["kv"]);
      const auto object = ReadObject(kecpp::Kind::machine, "", entry.value);
      const std::string name = object ? std::get<kecpp::Machine>(*object).name : "";
      if (name.compare(0, 2, "n-") != 0) continue;
      const Clock::duration since(ordered.at(std::stoul(name.substr(2))).load());
      const std::lock_guard<std::mutex> lock(mutex);
      delays.push_back(Seconds(now.time_since_epoch() - since));
    }
  }

  std::atomic<std::size_t> next{0};
  std::vector<std::atomic<Clock::rep>> ordered;
  mutable std::mutex mutex;
  std::vector<double> delays;  // guarded by `mutex`
  std::atomic<bool> isEnding{false};
  EtcdClient client;
  std::thread thread;
};

struct Site {
  std::string name;
  std::unique_ptr<driver::Simulator> daemon;
  std::string config;
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

// Orders changes of the sites whose number leaves `part` when it is divided by ORDERERS.
void OrderChanges(std::vector<Site>& sites, std::size_t part, int machines, double rate,
                  double seconds, Follower& follower) {
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
    sites[which].daemon->SetMachine(machine, "name", "n-" + std::to_string(follower.Order()));
  }
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
  for (int i = 0; i < count; ++i) {
    Site site;
    site.name = "site-" + std::to_string(i);
    site.daemon = std::make_unique<driver::Simulator>(std::vector<std::string>{
        "--hosts", "10", "--machines", std::to_string(machines), "--seed", std::to_string(i + 1)});
    site.config = site.daemon->ConfigFile(site.daemon->Config());
    sites.push_back(std::move(site));
  }
  const auto begin = Clock::now();
  for (Site& site : sites) {
    site.publisher = std::make_unique<driver::ChildProcess>(
        std::vector<std::string>{KECPP_PUBLISH_PROGRAM, "--config", site.config, "--site",
                                 site.name, "--to", cluster.Urls()});
  }
  while (CompleteSites(client) < sites.size()) {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
  const double first = Seconds(Clock::now() - begin);
  std::printf("first publication: %d sites of %d machines in %.1f s, %.0f objects a second\n",
              count, machines, first, count * (machines + 20.0) / first);

  Follower follower(options);
  std::this_thread::sleep_for(std::chrono::seconds(1));
  std::vector<std::thread> orderers;
  for (std::size_t part = 0; part < ORDERERS; ++part) {
    orderers.emplace_back(
        [&, part] { OrderChanges(sites, part, machines, rate / ORDERERS, seconds, follower); });
  }
  for (std::thread& orderer : orderers) orderer.join();
  std::this_thread::sleep_for(std::chrono::seconds(2));
  std::vector<double> delays = follower.Delays();
  if (delays.empty()) throw std::runtime_error("no change has arrived");
  std::sort(delays.begin(), delays.end());
  const auto at = [&](double part) {
    return 1000 * delays[static_cast<std::size_t>(part * static_cast<double>(delays.size() - 1))];
  };
  std::printf(
      "%.0f changes a second, %zu arrived: delay median %.1f ms, 99 %% %.1f ms, most %.1f ms\n",
      static_cast<double>(follower.Ordered()) / seconds, delays.size(), at(0.5), at(0.99), at(1));
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
