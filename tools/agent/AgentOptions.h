// SPDX-License-Identifier: MIT
//
// What kecpp-agent's command line asks for.
#ifndef KECPP_TOOLS_AGENT_AGENTOPTIONS_H
#define KECPP_TOOLS_AGENT_AGENTOPTIONS_H

#include <optional>
#include <string>

#include "tools/agent/Limits.h"

namespace tools::agent {

struct AgentOptions {
  std::string config;  // a file's path, an XML text, or empty for the library's default
  std::string address = "127.0.0.1";
  int port = 5988;  // 0: a free one
  // Where metrics are served besides, without users; no address: nowhere.
  std::string metricsAddress;
  int metricsPort = 0;
  std::size_t metricsMachines = 0;  // so many have a line in the metrics
  std::string certificateFile;      // empty: plain HTTP
  std::string keyFile;
  std::string usersFile;       // empty: everybody may ask
  std::string logLevel;        // empty: as the configuration says
  std::string indicationsTo;   // hosts; empty: nobody can subscribe
  std::string stateFolder;     // where subscriptions are kept; empty: nowhere
  std::string listenerCaFile;  // verifies listeners; empty: the system's
  std::chrono::seconds deliveryRetry{30};
  std::chrono::seconds readyWait{10};  // how long a request waits for the first fill
  Limits limits;
  std::string printMof;  // a namespace: print its classes and end; empty: serve
};

// Reads the command line. Gives the exit status when there is nothing more to do: 0 after --help
// and --version, which print on standard output, 2 for a mistake, reported on standard error.
std::optional<int> ParseAgentOptions(int argc, const char* const* argv, AgentOptions& options);

}  // namespace tools::agent

#endif
