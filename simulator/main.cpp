// SPDX-License-Identifier: MIT
//
// kecpp-mgmtd-sim: a management daemon with a made-up inventory, for trying and testing agents.
#include <signal.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>

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

void Serve(const Options& options) {
  sim::Inventory inventory(options.counts, options.seed);
  sim::Daemon daemon(inventory, options.daemon);
  sim::Churn churn(inventory, options.churn, options.seed);
  sim::Faults faults;
  sim::Statistics statistics;
  sim::HttpServer server(options.https ? sim::MakeTlsContext()
                                       : sim::TlsContext(nullptr, &SSL_CTX_free));
  sim::Restarts restarts(server, daemon, options.pidFile);
  sim::Misbehaviour misbehaviour(server, restarts);
  sim::Endpoint endpoint(daemon, faults, misbehaviour, statistics);
  endpoint.AddTo(server);
  sim::Controlled controlled{inventory,  daemon, churn,    faults,
                             statistics, server, restarts, [] { kill(getpid(), SIGTERM); }};
  sim::AddControls(controlled);

  const int port = server.Bind(options.port);
  server.Start();
  restarts.WritePid(std::to_string(getpid()));
  std::printf("listening on %s://127.0.0.1:%d/sdk/pxaService\n", options.https ? "https" : "http",
              port);
  std::fflush(stdout);
  AwaitEnd(options.duration);

  server.EndConnections();  // a daemon that goes leaves its waits unanswered
  daemon.Shutdown();
  misbehaviour.Shutdown();
  server.Stop();
  restarts.RemovePid();
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
