// SPDX-License-Identifier: MIT
#include "tools/publish/PublishRun.h"

#include <atomic>
#include <chrono>
#include <exception>
#include <iostream>
#include <memory>
#include <new>
#include <stdexcept>
#include <thread>

#include "fleet/Documents.h"
#include "fleet/Keys.h"
#include "tools/common/CellText.h"
#include "tools/common/ObjectJson.h"
#include "tools/publish/FirstProgress.h"
#include "tools/publish/PublishMetrics.h"
#include "tools/publish/Publisher.h"

namespace tools::publish {
namespace {

using State = kecpp::Status::State;
using std::chrono::milliseconds;

constexpr milliseconds WAIT_SLICE(200);
constexpr milliseconds END_PATIENCE(1000);  // for the request that is under way

void Report(const std::string& text) {
  std::cerr << std::string(PROGRAM) + ": " + Printable(text) + '\n';
}

kecpp::Options InventoryOptions(const PublishOptions& options) {
  kecpp::Options asked{options.config};
  asked.connectInBackground = true;
  asked.logLevel = options.logLevel;
  return asked;
}

// Says once why there is no connection to the daemon, and that there is one again.
class DaemonReport {
 public:
  void Note(const kecpp::Status& status) {
    if (status.state == State::connected) {
      if (!reported.empty()) Report("the daemon is connected");
      reported.clear();
      if (connections != status.connections && !status.authorizationFailure.empty()) {
        Report("cannot watch roles and privileges: " + status.authorizationFailure);
      }
      connections = status.connections;
    } else if (!status.reason.empty() && reported.empty()) {
      reported = status.reason;
      Report((status.state == State::lost ? "connection lost (" + reported + ")" : reported) +
             ", connecting again");
    }
  }

 private:
  std::string reported;  // empty: nothing since the last connection
  unsigned long long connections = 0;
};

std::string StateText(const kecpp::Status& status) {
  if (status.state == State::connected) return "following the management daemon";
  return status.reason.empty() ? "connecting" : "connecting again: " + status.reason;
}

// False at the end of the run.
bool AwaitDaemon(const kecpp::Inventory& inventory, const EndOfRun& end, DaemonReport& report,
                 ServiceManager& manager) {
  for (kecpp::Status status = inventory.State(); status.state != State::connected;
       status = inventory.State()) {
    report.Note(status);
    manager.Look(false, StateText(status));
    if (end.Ended()) return false;
    inventory.WaitForState(status, WAIT_SLICE);
  }
  return true;
}

// Marks what the inventory's follower names. When memory runs out, which also closes a follower,
// another one begins and everything is compared.
class Marker {
 public:
  Marker(const kecpp::Inventory& from, Marks& to, Publisher& sink)
      : inventory(from), marks(to), publisher(sink), thread([this] { Run(); }) {}
  ~Marker() {
    isEnding = true;
    thread.join();
  }
  Marker(const Marker&) = delete;
  Marker& operator=(const Marker&) = delete;

 private:
  void Run() {
    while (!isEnding) {
      try {
        Follow();
      } catch (const std::bad_alloc&) {
        Report("out of memory; comparing everything");
      }
      if (isEnding) return;
      std::this_thread::sleep_for(WAIT_SLICE);
      publisher.Reconcile();
    }
  }

  // Until the follower is closed.
  void Follow() {
    kecpp::Follower follower = inventory.Follow();
    while (!isEnding && !follower.Closed()) {
      if (!follower.Wait(WAIT_SLICE)) continue;
      const std::int64_t now = kecpp::fleet::NowMilliseconds();
      for (const kecpp::Change& change : follower.Next()) {
        marks.Add(kecpp::fleet::ObjectPart(change.kind, change.key), now);
      }
    }
  }

  const kecpp::Inventory& inventory;
  Marks& marks;
  Publisher& publisher;
  std::atomic<bool> isEnding{false};
  std::thread thread;
};

// Runs the publisher on a thread until the object goes.
class PublisherThread {
 public:
  explicit PublisherThread(Publisher& ran) : publisher(ran), thread([this] { Run(); }) {}
  ~PublisherThread() {
    publisher.End();
    const auto patience = std::chrono::steady_clock::now() + END_PATIENCE;
    while (!hasEnded && std::chrono::steady_clock::now() < patience) {
      std::this_thread::sleep_for(milliseconds(5));
    }
    publisher.Cut();
    thread.join();
  }
  PublisherThread(const PublisherThread&) = delete;
  PublisherThread& operator=(const PublisherThread&) = delete;

  // Throws what ended it.
  void Check() const {
    if (hasEnded && failure) std::rethrow_exception(failure);
  }

 private:
  void Run() {
    try {
      publisher.Run();
    } catch (...) {
      failure = std::current_exception();
    }
    hasEnded = true;
  }

  Publisher& publisher;
  std::exception_ptr failure;  // constant once it has ended
  std::atomic<bool> hasEnded{false};
  std::thread thread;
};

std::string StateText(const kecpp::Status& status, const Counters& counters) {
  if (counters.isInTrouble) return "trying to reach the cluster again";
  if (counters.agreements == 0) return "publishing everything";
  return status.state == State::connected ? "publishing" : StateText(status);
}

// What the main thread sees to while the others publish. It gives no sign of life for a publisher
// that hangs.
void WatchOver(const kecpp::Inventory& inventory, Publisher& publisher,
               const PublisherThread& running, const Counters& counters, const Marks& marks,
               const EndOfRun& end, DaemonReport& report, ServiceManager& manager) {
  FirstProgress progress;
  unsigned long long connections = inventory.State().connections;
  while (!end.Ended()) {
    const kecpp::Status status = inventory.State();
    report.Note(status);
    publisher.SetConnected(status.state == State::connected);
    if (status.connections != connections) publisher.Reconcile();
    connections = status.connections;
    running.Check();
    progress.Show(counters, marks);
    if (publisher.IsMoving()) {
      manager.Look(counters.agreements != 0, StateText(status, counters));
    }
    inventory.WaitForState(status, milliseconds(end.Slice(static_cast<int>(WAIT_SLICE.count()))));
  }
}

}  // namespace

void Publish(const PublishOptions& options, const EndOfRun& end, ServiceManager& manager) {
  WarnOfOpenDoors(PROGRAM, options.login, options.cluster.members);
  const kecpp::Inventory inventory(InventoryOptions(options));
  Marks marks;
  Counters counters;
  std::unique_ptr<PublishMetrics> metrics;
  if (options.metricsPort >= 0) {
    metrics = std::make_unique<PublishMetrics>(options.metricsPort, inventory, counters, marks);
    std::cout << "listening on " << metrics->Url() << std::endl;
  }
  DaemonReport report;
  if (!AwaitDaemon(inventory, end, report, manager)) return;
  Publisher publisher(inventory, options.site, options.cluster, marks, counters);
  const Marker marker(inventory, marks, publisher);
  const PublisherThread running(publisher);
  WatchOver(inventory, publisher, running, counters, marks, end, report, manager);
  manager.Stopping();
}

void PrintEvents(const PublishOptions& options, const EndOfRun& end, ServiceManager& manager) {
  const kecpp::Inventory inventory(InventoryOptions(options));
  kecpp::Follower follower = inventory.Follow();
  DaemonReport report;
  while (!end.Ended()) {
    const kecpp::Status status = inventory.State();
    report.Note(status);
    manager.Look(status.state == State::connected, StateText(status));
    if (!follower.Wait(milliseconds(end.Slice(static_cast<int>(WAIT_SLICE.count()))))) continue;
    const auto all = [](kecpp::Kind) { return true; };
    if (!(std::cout << EventLines(follower.Next(), inventory, all)).flush()) {
      throw std::runtime_error("cannot write to standard output");
    }
  }
}

}  // namespace tools::publish
