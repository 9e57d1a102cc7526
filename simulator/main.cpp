// SPDX-License-Identifier: MIT
//
// kecpp-mgmtd-sim: a management daemon with a made-up inventory, for trying and testing agents.
#include <signal.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <list>

#include "simulator/Certificate.h"
#include "simulator/Churn.h"
#include "simulator/Control.h"
#include "simulator/Daemon.h"
#include "simulator/Endpoint.h"
#include "simulator/HttpServer.h"
#include "simulator/Inventory.h"
#include "simulator/Misbehaviour.h"
#include "simulator/Restarts.h"

namespace {

constexpr int USAGE_ERROR = 2;

struct Options {
  std::vector<unsigned int> counts;  // of each kind
  std::uint64_t seed = 1;
  double churn = 0;
  int port = 0;
  unsigned int daemons = 1;
  unsigned int duration = 0;
  bool https = false;
  std::string pidFile;
  sim::DaemonOptions daemon;
};

void Declare(Options& options, CLI::App& app) {
  for (const sim::Kind& kind : sim::Kinds()) options.counts.push_back(kind.usually);
  for (std::size_t i = 0; i < options.counts.size(); ++i) {
    const std::string plural = sim::Kinds()[i].plural;
    app.add_option("--" + plural, options.counts[i], "Number of " + plural);
  }
  app.add_option("--seed", options.seed, "Seed of the inventory and of its changes");
  app.add_option("--churn", options.churn, "Random changes per second");
  app.add_option("--listen-port", options.port, "Port on 127.0.0.1; 0 takes a free one")
      ->check(CLI::Range(0, 65535));
  app.add_option("--daemons", options.daemons,
                 "Number of daemons, each with its inventory and its port")
      ->check(CLI::Range(1, 1000));
  app.add_option("--duration", options.duration, "End after that many seconds");
  app.add_flag("--https", options.https, "Serve HTTPS with a certificate made at start");
  app.add_option("--pid-file", options.pidFile, "Write the process id there");
  app.add_option("--ticket-dir", options.daemon.account.ticketFolder, "Folder for local tickets");
  app.add_option("--user", options.daemon.account.user, "User name");
  app.add_option("--password", options.daemon.account.password, "Password");
  app.add_option("--max-objects", options.daemon.maxObjects, "Objects per answer; 0: no limit");
  app.set_version_flag("--version", "kecpp-mgmtd-sim " KECPP_SIMULATOR_VERSION);
}

sigset_t EndingSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGTERM);
  sigaddset(&signals, SIGINT);
  return signals;
}

void AwaitEnd(unsigned int seconds) {
  const sigset_t ends = EndingSignals();
  const timespec time{static_cast<time_t>(seconds), 0};
  while (sigtimedwait(&ends, nullptr, seconds > 0 ? &time : nullptr) < 0 && errno == EINTR) {
  }
}

// One daemon with its inventory, its port and its controls.
class Service {
 public:
  Service(const Options& options, unsigned int number)
      : inventory(options.counts, options.seed + number),
        daemon(inventory, options.daemon),
        churn(inventory, options.churn, options.seed + number),
        scheme(options.https ? "https" : "http"),
        server(options.https ? sim::MakeTlsContext() : sim::TlsContext(nullptr, &SSL_CTX_free)),
        restarts(server, daemon, PidFile(options, number)),
        misbehaviour(server, restarts),
        endpoint(daemon, faults, misbehaviour, statistics) {
    endpoint.AddTo(server);
    sim::AddControls(controlled);
    port = server.Bind(options.port == 0 ? 0 : options.port + static_cast<int>(number));
    server.Start();
    restarts.WritePid(std::to_string(getpid()));
  }
  ~Service() {
    server.EndConnections();  // a daemon that goes leaves its waits unanswered
    daemon.Shutdown();
    misbehaviour.Shutdown();
    server.Stop();
    restarts.RemovePid();
  }
  Service(const Service&) = delete;
  Service& operator=(const Service&) = delete;

  std::string Url() const {
    return std::string(scheme) + "://127.0.0.1:" + std::to_string(port) + "/sdk/pxaService";
  }

 private:
  static std::string PidFile(const Options& options, unsigned int number) {
    const bool isOne = options.daemons == 1 || options.pidFile.empty();
    return isOne ? options.pidFile : options.pidFile + '.' + std::to_string(number + 1);
  }

  sim::Inventory inventory;
  sim::Daemon daemon;
  sim::Churn churn;
  sim::Faults faults;
  sim::Statistics statistics;
  const char* const scheme;
  sim::HttpServer server;
  sim::Restarts restarts;
  sim::Misbehaviour misbehaviour;
  sim::Endpoint endpoint;
  sim::Controlled controlled{inventory,  daemon, churn,    faults,
                             statistics, server, restarts, [] { kill(getpid(), SIGTERM); }};
  int port = 0;
};

void Serve(const Options& options) {
  std::list<Service> services;
  for (unsigned int number = 0; number < options.daemons; ++number) {
    services.emplace_back(options, number);
    std::printf("listening on %s\n", services.back().Url().c_str());
    std::fflush(stdout);
  }
  AwaitEnd(options.duration);
}

int Run(int argc, char** argv) {
  Options options;
  CLI::App app("A simulated management daemon", "kecpp-mgmtd-sim");
  Declare(options, app);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& e) {
    return app.exit(e) == 0 ? 0 : USAGE_ERROR;
  }
  Serve(options);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  // Before any thread is made, so that the signals come to the one that waits for them.
  const sigset_t ends = EndingSignals();
  pthread_sigmask(SIG_BLOCK, &ends, nullptr);
  try {
    return Run(argc, argv);
  } catch (const std::exception& e) {
    std::fprintf(stderr, "kecpp-mgmtd-sim: %s\n", e.what());
    return 1;
  }
}
