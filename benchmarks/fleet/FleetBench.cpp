// SPDX-License-Identifier: MIT
//
// fleet_bench [MACHINES [ROUNDS]], 20000 and 5 without: what publishing costs.
//
//   first publication   a publisher that has read the inventory, until the cluster has everything
//   bare loop           the same transactions, made beforehand, sent one by one with libcurl alone
//   a change            processor time of the whole process for a change of the daemon: ordering
//   it,
//                       applying it and publishing it
//
// One etcd member of Debian's package on loopback, with fsync. Rounds alternate; the ratio is that
// of the medians. Ends with 77 where there is no etcd.
#include <curl/curl.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <stdexcept>
#include <thread>
#include <vector>

#include "fleet/Documents.h"
#include "fleet/Keys.h"
#include "simulator/driver/EtcdCluster.h"
#include "simulator/driver/ProcessSample.h"
#include "simulator/driver/Simulator.h"
#include "tools/publish/Publisher.h"

namespace {

using namespace kecpp::fleet;
using Clock = std::chrono::steady_clock;

constexpr int NO_ETCD = 77;
constexpr std::size_t BATCH = 100;

double Seconds(Clock::time_point since) {
  return std::chrono::duration<double>(Clock::now() - since).count();
}

double ProcessorSeconds() {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

// Publishes a site until the object goes.
class Publication {
 public:
  Publication(const kecpp::Inventory& inventory, const std::string& site,
              const EtcdOptions& options)
      : publisher(inventory, site, options, marks, counters), thread([this] { publisher.Run(); }) {}
  ~Publication() {
    publisher.End();
    thread.join();
  }
  Publication(const Publication&) = delete;
  Publication& operator=(const Publication&) = delete;

  void AwaitAgreement() const {
    while (counters.agreements == 0) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  void Mark(const kecpp::Change& change) {
    marks.Add(ObjectPart(change.kind, change.key), NowMilliseconds());
  }
  std::size_t Waiting() const { return marks.Size(); }
  const tools::publish::Counters& Counts() const { return counters; }

 private:
  tools::publish::Marks marks;
  tools::publish::Counters counters;
  tools::publish::Publisher publisher;
  std::thread thread;
};

// What the publisher of `from` sent, as requests for the site `to`, whose name is as long.
std::vector<std::string> SameTransactions(const EtcdOptions& options, const std::string& from,
                                          const std::string& to) {
  EtcdClient client(options);
  Transaction epoch;
  epoch.Put(EpochOf(to), "{}");
  const std::int64_t revision = client.Commit(epoch).revision;
  std::vector<std::string> requests;
  std::vector<KeyValue> entries;
  const auto flush = [&] {
    if (entries.empty()) return;
    Transaction batch;
    batch.Compare(EpochOf(to), revision);
    batch.ElseGet(EpochOf(to));
    for (const KeyValue& entry : entries) {
      const std::string key = ObjectsOf(to) + entry.key.substr(ObjectsOf(from).size());
      batch.Compare(key, 0);
      batch.Put(key, entry.value);
    }
    requests.push_back(batch.Text());
    entries.clear();
  };
  ReadPrefix(client, ObjectsOf(from), [&](KeyValue&& entry) {
    entries.push_back(std::move(entry));
    if (entries.size() == BATCH) flush();
  });
  flush();
  return requests;
}

std::size_t KeepBody(char* bytes, std::size_t size, std::size_t count, void* body) {
  static_cast<std::string*>(body)->append(bytes, size * count);
  return size * count;
}

double BareLoop(const std::string& url, const std::vector<std::string>& requests) {
  CURL* easy = curl_easy_init();
  curl_slist* headers = curl_slist_append(nullptr, "Expect:");
  std::string body;
  curl_easy_setopt(easy, CURLOPT_URL, (url + "/v3/kv/txn").c_str());
  curl_easy_setopt(easy, CURLOPT_HTTPHEADER, headers);
  curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &KeepBody);
  curl_easy_setopt(easy, CURLOPT_WRITEDATA, &body);
  const auto begin = Clock::now();
  for (const std::string& request : requests) {
    body.clear();
    curl_easy_setopt(easy, CURLOPT_POSTFIELDS, request.data());
    curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE, static_cast<long>(request.size()));
    if (curl_easy_perform(easy) != CURLE_OK ||
        body.find("\"succeeded\":true") == std::string::npos) {
      throw std::runtime_error("the bare loop failed: " + body);
    }
  }
  const double took = Seconds(begin);
  curl_slist_free_all(headers);
  curl_easy_cleanup(easy);
  return took;
}

// Changes machines as fast as the daemon takes them and waits until all is published.
void MeasureChanges(driver::Simulator& simulator, const kecpp::Inventory& inventory,
                    Publication& publication) {
  constexpr int CHANGES = 2000;
  kecpp::Follower follower = inventory.Follow();
  while (!follower.Next().empty()) continue;
  const auto written = [&] { return publication.Counts().put.load(); };
  const auto before = written();
  const double processor = ProcessorSeconds();
  const auto begin = Clock::now();
  std::atomic<bool> isEnding{false};
  std::thread marker([&] {
    while (!isEnding) {
      if (!follower.Wait(std::chrono::milliseconds(20))) continue;
      for (const kecpp::Change& change : follower.Next()) publication.Mark(change);
    }
  });
  for (int i = 1; i <= CHANGES; ++i) {
    simulator.SetMachine("vm-" + std::to_string(1 + i % 1000), "name", "n" + std::to_string(i));
  }
  driver::Eventually([&] {
    const auto machine = inventory.FindMachine("vm-1");
    return machine && machine->name == "n" + std::to_string(CHANGES) && publication.Waiting() == 0;
  });
  isEnding = true;
  marker.join();
  std::printf("a change: %llu writes of %d changes in %.1f s, %.0f us of processor time each\n",
              static_cast<unsigned long long>(written() - before), CHANGES, Seconds(begin),
              1e6 * (ProcessorSeconds() - processor) / CHANGES);
}

void Measure(int machines, int rounds) {
  driver::EtcdCluster cluster(1, {"--quota-backend-bytes=8000000000"});
  driver::Simulator simulator({"--hosts", "10", "--machines", std::to_string(machines)});
  EtcdOptions options;
  options.members = {cluster.Url(0)};
  kecpp::Options asked;
  asked.config = simulator.Config();
  const kecpp::Inventory inventory(asked);

  std::vector<double> published, bare, processor;
  double resident = 0;
  double objects = 0;
  for (int round = 0; round < rounds; ++round) {
    const std::string site = "publisher-" + std::to_string(10 + round);
    const double before = ProcessorSeconds();
    const double memory = static_cast<double>(SampleOf("/proc/self").residentKb);
    {
      const auto begin = Clock::now();
      const Publication publication(inventory, site, options);
      publication.AwaitAgreement();
      published.push_back(Seconds(begin));
      processor.push_back(ProcessorSeconds() - before);
      objects = static_cast<double>(publication.Counts().objects.load());
      if (round == 0) {
        resident = static_cast<double>(SampleOf("/proc/self").residentKb) - memory;
      }
    }
    const std::string other = "bare-loop-" + std::to_string(10 + round);
    bare.push_back(BareLoop(cluster.Url(0), SameTransactions(options, site, other)));
  }
  std::printf("first publication: %.0f objects, %.0f a second, %.1f us of processor time each\n",
              objects, objects / Median(published), 1e6 * Median(processor) / objects);
  std::printf("bare loop:         %.0f a second\n", objects / Median(bare));
  std::printf("ratio:             %.2f\n", Median(bare) / Median(published));
  std::printf("memory:            %.0f bytes an object\n", 1024 * resident / objects);
  Publication last(inventory, "publisher-10", options);
  last.AwaitAgreement();
  MeasureChanges(simulator, inventory, last);
}

}  // namespace

int main(int argc, char** argv) try {
  const int machines = argc > 1 ? std::atoi(argv[1]) : 20000;
  const int rounds = argc > 2 ? std::atoi(argv[2]) : 5;
  if (driver::EtcdCluster::Programs().empty()) return NO_ETCD;
  Measure(machines, rounds);
  return EXIT_SUCCESS;
} catch (const std::exception& error) {
  std::fprintf(stderr, "%s\n", error.what());
  return EXIT_FAILURE;
}
