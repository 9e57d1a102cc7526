// SPDX-License-Identifier: MIT
//
// kecpp-mgmtd-sim: a management daemon with a made-up inventory, for trying and testing agents.
#include <signal.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <thread>

#include "simulator/Certificate.h"
#include "simulator/Churn.h"
#include "simulator/Control.h"
#include "simulator/Daemon.h"
#include "simulator/Endpoint.h"
#include "simulator/Inventory.h"

namespace {

struct Options {
  unsigned int hosts = 2, machines = 10;
  std::uint64_t seed = 1;
  double churn = 0;
  int port = 0;
  unsigned int duration = 0;
  bool https = false;
  std::string pidFile;
  sim::DaemonOptions daemon;
};

void Read(Options& options, CLI::App& app) {
  app.add_option("--hosts", options.hosts, "Number of hosts");
  app.add_option("--machines", options.machines, "Number of machines");
  app.add_option("--seed", options.seed, "Seed of the inventory and of its changes");
  app.add_option("--churn", options.churn, "Random changes per second");
  app.add_option("--listen-port", options.port, "Port on 127.0.0.1; 0 takes a free one");
  app.add_option("--duration", options.duration, "End after that many seconds");
  app.add_flag("--https", options.https, "Serve HTTPS with a certificate made at start");
  app.add_option("--pid-file", options.pidFile, "Write the process id there");
  app.add_option("--ticket-dir", options.daemon.ticketFolder, "Folder for local tickets");
  app.add_option("--user", options.daemon.user, "User name");
  app.add_option("--password", options.daemon.password, "Password");
  app.add_option("--max-objects", options.daemon.maxObjects, "Objects per answer; 0: no limit");
}

void WritePid(const std::string& path, const std::string& pid) {
  if (path.empty()) return;
  const std::string fresh = path + ".new";
  std::ofstream(fresh) << pid << "\n";
  std::rename(fresh.c_str(), path.c_str());  // readers see one whole text or the other
}

std::unique_ptr<httplib::Server> MakeServer(bool https) {
  if (!https) return std::make_unique<httplib::Server>();
  char folder[] = "/tmp/kecpp-sim-XXXXXX";
  if (mkdtemp(folder) == nullptr) throw std::runtime_error("cannot make a folder for the key");
  const std::string cert = std::string(folder) + "/cert.pem",
                    key = std::string(folder) + "/key.pem";
  sim::MakeCertificate(cert, key);
  auto server = std::make_unique<httplib::SSLServer>(cert.c_str(), key.c_str());
  std::remove(cert.c_str());
  std::remove(key.c_str());
  rmdir(folder);
  return server;
}

int Serve(const Options& options) {
  sim::Inventory inventory(options.hosts, options.machines, options.seed);
  sim::Daemon daemon(inventory, options.daemon);
  sim::Churn churn(inventory, options.churn, options.seed);
  sim::Faults faults;
  sim::Statistics statistics;
  sim::Endpoint endpoint(daemon, faults, statistics);
  const auto server = MakeServer(options.https);
  server->new_task_queue = [] { return new httplib::ThreadPool(32); };
  server->set_keep_alive_max_count(1000000);
  server->set_keep_alive_timeout(60);
  server->set_tcp_nodelay(true);
  server->set_write_timeout(60);
  endpoint.AddTo(*server);

  const auto quit = [&] {
    endpoint.Shutdown();
    daemon.Shutdown();
    server->stop();
  };
  sim::Controlled controlled{inventory,
                             daemon,
                             churn,
                             faults,
                             statistics,
                             [&](const std::string& pid) { WritePid(options.pidFile, pid); },
                             [&] { kill(getpid(), SIGTERM); }};
  AddControls(*server, controlled);

  const int port = options.port == 0 ? server->bind_to_any_port("127.0.0.1")
                   : server->bind_to_port("127.0.0.1", options.port) ? options.port
                                                                     : -1;
  if (port < 0) {
    std::fprintf(stderr, "kecpp-mgmtd-sim: cannot listen on port %d\n", options.port);
    return 1;
  }
  WritePid(options.pidFile, std::to_string(getpid()));
  std::printf("listening on %s://127.0.0.1:%d/sdk/pxaService\n", options.https ? "https" : "http",
              port);
  std::fflush(stdout);

  std::thread listener([&] { server->listen_after_bind(); });
  sigset_t ends;
  sigemptyset(&ends);
  sigaddset(&ends, SIGTERM);
  sigaddset(&ends, SIGINT);
  if (options.duration > 0) {
    const timespec time{static_cast<time_t>(options.duration), 0};
    sigtimedwait(&ends, nullptr, &time);
  } else {
    int received = 0;
    sigwait(&ends, &received);
  }
  quit();
  // Idle connections are held until their time is over; nothing that matters is left by then.
  std::fflush(nullptr);
  listener.detach();
  if (!options.pidFile.empty()) std::remove(options.pidFile.c_str());
  _exit(0);
}

}  // namespace

int main(int argc, char** argv) {
  // Before any thread is made, so that the signals come to the one that waits for them.
  sigset_t ends;
  sigemptyset(&ends);
  sigaddset(&ends, SIGTERM);
  sigaddset(&ends, SIGINT);
  pthread_sigmask(SIG_BLOCK, &ends, nullptr);
  signal(SIGPIPE, SIG_IGN);

  Options options;
  CLI::App app{"A simulated management daemon"};
  Read(options, app);
  try {
    app.parse(argc, argv);
    return Serve(options);
  } catch (const CLI::ParseError& e) {
    return app.exit(e);
  } catch (const std::exception& e) {
    std::fprintf(stderr, "kecpp-mgmtd-sim: %s\n", e.what());
    return 1;
  }
}
