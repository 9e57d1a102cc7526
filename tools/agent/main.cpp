// SPDX-License-Identifier: MIT
//
// kecpp-agent: answers CIM clients from the library's inventory. It uses nothing but the installed
// header kecpp/inventory.h and is meant to be copied from.
#include <kecpp/inventory.h>
#include <malloc.h>
#include <sys/stat.h>

#include <cstdlib>
#include <exception>
#include <iostream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <utility>

#include "tools/agent/AgentOptions.h"
#include "tools/agent/AgentServer.h"
#include "tools/agent/CimEndpoint.h"
#include "tools/agent/ClassElements.h"
#include "tools/agent/ConnectionReport.h"
#include "tools/agent/Guards.h"
#include "tools/agent/HangUp.h"
#include "tools/agent/InteropModel.h"
#include "tools/agent/PoliteEnd.h"
#include "tools/agent/StatusPage.h"
#include "tools/agent/Users.h"
#include "tools/agent/api/Api.h"
#include "tools/agent/indications/IndicationService.h"
#include "tools/agent/metrics/Metrics.h"
#include "tools/common/EndOfRun.h"
#include "tools/common/ProcessEnd.h"
#include "tools/common/ServiceManager.h"
#include "tools/common/Terminal.h"

namespace tools::agent {
namespace {

constexpr const char* PROGRAM = "kecpp-agent";

TlsContext MakeTls(const AgentOptions& options) {
  if (options.certificateFile.empty()) return nullptr;
  return MakeTlsContext(options.certificateFile, options.keyFile);
}

void WarnOfOpenDoors(const AgentOptions& options) {
  if (options.usersFile.empty()) {
    std::cerr << PROGRAM << ": without --users everybody who reaches " << options.address
              << " may read the inventory\n";
  } else if (options.certificateFile.empty()) {
    std::cerr << PROGRAM << ": without --tls passwords go over the network in clear\n";
  }
}

void WarnOfReadable(const std::string& file) {
  struct stat status = {};
  if (stat(file.c_str(), &status) != 0 || (status.st_mode & S_IROTH) == 0) return;
  std::cerr << PROGRAM << ": every user of this machine can read " << file << '\n';
}

void WarnOfOpenFiles(const AgentOptions& options) {
  if (!options.usersFile.empty()) WarnOfReadable(options.usersFile);
  if (!options.keyFile.empty()) WarnOfReadable(options.keyFile);
}

// All or nothing: with one file wrong, none of the others is used.
void ReadAgain(const AgentOptions& options, Users* users, AgentServer& server) {
  try {
    TlsContext context = MakeTls(options);
    if (users) users->ReadAgain();
    server.UseTls(std::move(context));
    const bool hasAny = !options.usersFile.empty() || !options.certificateFile.empty();
    std::cerr << PROGRAM
              << (hasAny ? ": SIGHUP: users and certificate were read again\n"
                         : ": SIGHUP: without --users and --tls there is nothing to read again\n");
  } catch (const std::exception& error) {
    std::cerr << PROGRAM << ": SIGHUP: " << error.what() << "; nothing has changed\n";
  }
  WarnOfOpenFiles(options);
}

void Announce(const AgentOptions& options) {
  const bool isBare = options.address.find(':') == std::string::npos;
  std::cout << "listening on " << (options.certificateFile.empty() ? "http" : "https") << "://"
            << (isBare ? options.address : "[" + options.address + "]") << ":" << options.port
            << "/" << std::endl;
  if (!std::cout) throw std::runtime_error("cannot write to standard output");
}

kecpp::Options InventoryOptions(const AgentOptions& options) {
  kecpp::Options asked;
  asked.config = options.config;
  asked.connectInBackground = true;
  asked.logLevel = options.logLevel;
  return asked;
}

// A server of metrics alone, for programs of this machine; null when none was asked for.
std::unique_ptr<AgentServer> MetricsServer(const AgentOptions& options, Metrics& metrics) {
  if (options.metricsAddress.empty()) return nullptr;
  auto server = std::make_unique<AgentServer>(nullptr, options.limits);
  server->Bind(options.metricsAddress, options.metricsPort);
  AddGuards(*server, {nullptr, options.metricsAddress, true}, options.limits);
  AddMetrics(*server, metrics);
  server->Start();
  return server;
}

DeliveryPolicy PolicyOf(const AgentOptions& options) {
  DeliveryPolicy policy;
  policy.hosts = AllowedHosts(options.indicationsTo);
  policy.caFile = options.listenerCaFile;
  policy.retryInterval = options.deliveryRetry;
  return policy;
}

std::optional<InteropModel::Indications> IndicationsOf(const AgentOptions& options,
                                                       const DeliveryPolicy& policy) {
  if (options.indicationsTo.empty()) return {};
  return InteropModel::Indications{policy.retries,         policy.retryInterval,
                                   policy.removalInterval, MOST_DESTINATIONS,
                                   MOST_SUBSCRIPTIONS,     !options.stateFolder.empty()};
}

std::string StateText(const kecpp::Status& status) {
  if (status.state == kecpp::Status::State::connected) return "connected to the management daemon";
  return status.reason.empty() ? "connecting" : "connecting again: " + status.reason;
}

// Serves what the inventory knows until the end of the run.
void Serve(const AgentOptions& options, const kecpp::Inventory& inventory, AgentServer& server,
           const EndOfRun& end, ServiceManager& manager) {
  InventoryGate gate(inventory, options.readyWait);
  const std::string host = LocalHostName();
  const DeliveryPolicy policy = PolicyOf(options);
  DeliveryCounters deliveries;
  InteropModel interop(host, !options.usersFile.empty(), IndicationsOf(options, policy));
  std::unique_ptr<IndicationService> indications;
  if (interop.IndicationService()) {
    indications = std::make_unique<IndicationService>(inventory, interop, host, options.stateFolder,
                                                      policy, deliveries);
  }
  StoredSource* const stored =
      indications ? static_cast<StoredSource*>(indications.get()) : &interop;
  const Operations operations(gate, *stored, options.limits);
  ConnectionReport report;
  RequestCounters requests;
  AddCimEndpoint(server, operations, requests);
  const StreamPlaces places(options.limits);
  api::Api api(inventory, report, places, requests);
  api.AddTo(server);
  AddStatusPage(server, [&api] { api.Prepare(); });
  Metrics metrics(
      inventory, [&api] { return api.Changes(); }, requests, deliveries, server,
      options.metricsMachines);
  AddMetrics(server, metrics);
  const std::unique_ptr<AgentServer> metricsServer = MetricsServer(options, metrics);
  // What the server's threads use goes after them, whatever is thrown.
  struct Stop {
    InventoryGate& gate;
    api::Api& api;
    AgentServer& server;
    IndicationService* indications;
    ~Stop() {
      gate.End();
      if (indications) indications->End();
      api.End();
      server.Stop();
    }
  } const stop{gate, api, server, indications.get()};
  server.Start();
  Announce(options);
  report.Follow(inventory, end, [&](const kecpp::Status& status) {
    manager.Look(status.state == kecpp::Status::State::connected, StateText(status));
    api.Look(status);
  });
  manager.Stopping();
}

// Takes the socket that systemd hands over, else the options' address and port. The options get
// those that are served.
void Listen(AgentServer& server, const ServiceManager& manager, AgentOptions& options) {
  if (!manager.Socket()) {
    options.port = server.Bind(options.address, options.port);
    return;
  }
  options.port = server.Adopt(*manager.Socket());
  options.address = server.Address();
}

void Run(AgentOptions options) {
  ServiceManager manager;
  const EndOfRun end(0);
  const std::unique_ptr<Users> users(
      options.usersFile.empty() ? nullptr : std::make_unique<Users>(options.usersFile));
  AgentServer server(MakeTls(options), options.limits);
  Listen(server, manager, options);
  if (!server.IsLocal()) WarnOfOpenDoors(options);
  AddGuards(server, {users.get(), options.address, server.IsLocal()}, options.limits);
  WarnOfOpenFiles(options);
  const HangUp hangUp([&] {
    manager.BeginReload();
    ReadAgain(options, users.get(), server);
    manager.EndReload();
  });
  const kecpp::Inventory inventory(InventoryOptions(options));
  Serve(options, inventory, server, end, manager);
}

int RunGuarded(const AgentOptions& options) {
  const ProcessEndGuard guard(PROGRAM);
  try {
    Run(options);
    return EXIT_SUCCESS;
  } catch (const std::exception& error) {
    std::cerr << PROGRAM << ": " << error.what() << '\n';
  }
  return EXIT_FAILURE;
}

int RunCommand(int argc, char** argv) {
  if (!HasStandardStreams(PROGRAM)) return EXIT_FAILURE;
  AgentOptions options;
  if (auto status = ParseAgentOptions(argc, argv, options)) {
    return FinishOutput(PROGRAM, *status);
  }
  if (!options.printMof.empty()) {
    std::cout << MofText(*FindNamespace(options.printMof));
    return FinishOutput(PROGRAM, EXIT_SUCCESS);
  }
  EndPolitely();
  return RunGuarded(options);
}

}  // namespace
}  // namespace tools::agent

int main(int argc, char** argv) {
  // Memory of copies and answers goes back to the system when they go. The allocator would keep
  // tens of megabytes for each of the threads that have made one.
  constexpr int LARGE = 256 * 1024;
  mallopt(M_MMAP_THRESHOLD, LARGE);  // NOLINT(concurrency-mt-unsafe): there is one thread yet
  return tools::agent::RunCommand(argc, argv);
}
