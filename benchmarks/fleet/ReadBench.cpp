// SPDX-License-Identifier: MIT
//
// fleet_read_bench [MACHINES [CHANGES]], 100000 and 500 without: what reading a fleet costs.
//
//   reading     a kecpp::Fleet of 50 sites with so many machines, until everything is there, and
//               the memory that it takes
//   walking     a new follower's first content
//   delay       from the order of a change to the daemon of one of these sites, through its
//               publisher and the cluster, to the event of a follower
//
// One etcd member of Debian's package on loopback, with fsync. Ends with 77 where there is no etcd.
#include <kecpp/fleet.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
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
constexpr int SITES = 50;
constexpr int BATCH = 100;

double Seconds(Clock::time_point since) {
  return std::chrono::duration<double>(Clock::now() - since).count();
}

kecpp::Machine Machine(int number) {
  const std::string text = std::to_string(number);
  kecpp::Machine machine;
  machine.key = "vm-" + text;
  machine.name = "machine " + text;
  machine.uuid = "4e5ee433-488e-2eaf-b172-" + std::to_string(100000000000 + number);
  machine.guestFullName = "Debian GNU/Linux 12 (64-bit)";
  machine.guestHostName = "machine-" + text + ".example";
  machine.guestIPAddress = "10.0.0.1";
  machine.path = "[storage1] machine-" + text + "/machine-" + text + ".vmx";
  machine.powerStateText = "poweredOn";
  machine.powerState = kecpp::PowerState::on;
  machine.operationalStatus = 2;
  machine.host = "host-" + std::to_string(number % 20);
  return machine;
}

void Fill(const std::string& url, int machines) {
  EtcdOptions options;
  options.members = {url};
  EtcdClient client(options);
  for (int at = 0; at < machines; at += BATCH) {
    Transaction batch;
    for (int number = at; number < std::min(machines, at + BATCH); ++number) {
      const std::string site = "site-" + std::to_string(number % SITES);
      const kecpp::Machine machine = Machine(number);
      batch.Put(ObjectsOf(site) + ObjectPart(kecpp::Kind::machine, machine.key),
                ObjectText(site, machine).Whole(1, TimeText(NowMilliseconds())));
    }
    client.Commit(batch);
  }
}

// Gives one machine of the daemon one name after the other, each when the last one has arrived.
void MeasureDelay(const kecpp::Fleet& fleet, kecpp::FleetFollower& follower, const std::string& url,
                  int changes) {
  driver::Simulator simulator({"--hosts", "2", "--machines", "50"});
  driver::ChildProcess publisher(
      {KECPP_PUBLISH_PROGRAM, "--config", simulator.Config(), "--site", "measured", "--to", url});
  const auto isTrue = [&] {
    const auto site = fleet.FindSite("measured");
    return site && site->IsTrue();
  };
  if (!driver::Eventually(isTrue)) throw std::runtime_error(publisher.Errors());
  std::vector<double> delays;
  for (int i = 0; i < changes; ++i) {
    const std::string key = "vm-" + std::to_string(1 + i % 50);
    const std::string name = "n" + std::to_string(i);
    const auto begin = Clock::now();
    simulator.SetMachine(key, "name", name);
    while (true) {
      follower.Wait(std::chrono::seconds(1));
      follower.Next();
      const auto machine = fleet.FindMachine("measured", key);
      if (machine && machine->name == name) break;
      if (Seconds(begin) > 60) throw std::runtime_error("a change did not arrive");
    }
    delays.push_back(1000 * Seconds(begin));
  }
  std::sort(delays.begin(), delays.end());
  const auto at = [&](double share) {
    return delays[static_cast<std::size_t>(share * static_cast<double>(delays.size() - 1))];
  };
  std::printf("delay:   %.1f ms in the median, %.1f ms for 99 %%, %.1f ms at most, of %d changes\n",
              at(0.5), at(0.99), delays.back(), changes);
}

void Measure(int machines, int changes) {
  driver::EtcdCluster cluster(1, {"--quota-backend-bytes=8000000000"});
  Fill(cluster.Url(0), machines);
  const ProcessSample before = SampleOf("/proc/self");
  auto begin = Clock::now();
  const kecpp::Fleet fleet({cluster.Url(0)});
  const double took = Seconds(begin);
  const ProcessSample after = SampleOf("/proc/self");
  std::printf("reading: %d machines of %d sites in %.2f s, %.1f us of processor time each\n",
              machines, SITES, took, 1e6 * (after.cpuSeconds - before.cpuSeconds) / machines);
  std::printf("memory:  %.0f bytes a machine\n",
              1024.0 * static_cast<double>(after.residentKb - before.residentKb) / machines);
  begin = Clock::now();
  kecpp::FleetFollower follower = fleet.Follow();
  std::size_t walked = 0;
  while (follower.Wait(std::chrono::milliseconds(0))) walked += follower.Next().size();
  std::printf("walking: %.2f us for each of %zu entries\n",
              1e6 * Seconds(begin) / static_cast<double>(walked), walked);
  MeasureDelay(fleet, follower, cluster.Url(0), changes);
}

}  // namespace

int main(int argc, char** argv) try {
  const int machines = argc > 1 ? std::atoi(argv[1]) : 100000;
  const int changes = argc > 2 ? std::atoi(argv[2]) : 500;
  if (driver::EtcdCluster::Programs().empty()) return NO_ETCD;
  Measure(machines, changes);
  return EXIT_SUCCESS;
} catch (const std::exception& error) {
  std::fprintf(stderr, "%s\n", error.what());
  return EXIT_FAILURE;
}
