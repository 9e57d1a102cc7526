// SPDX-License-Identifier: MIT
#include "tools/agent/AgentOptions.h"

#include <kecpp/inventory.h>

#include <CLI/CLI.hpp>
#include <charconv>

#include "tools/agent/HostName.h"
#include "tools/agent/indications/AllowedHosts.h"
#include "tools/common/ConfigArgument.h"

namespace tools::agent {
namespace {

constexpr int USAGE_ERROR = 2;
constexpr int MAX_PORT = 65535;

// "ADDRESS:PORT"; the address may be in brackets, as an IPv6 address must be.
bool ReadListen(const std::string& text, std::string& listenAddress, int& listenPort) {
  const std::size_t colon = text.rfind(':');
  if (colon == std::string::npos || colon == 0) return false;
  std::string address = text.substr(0, colon);
  if (address.size() > 2 && address.front() == '[' && address.back() == ']') {
    address = address.substr(1, address.size() - 2);
  }
  int port = -1;
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data() + colon + 1, end, port);
  if (result.ec != std::errc() || result.ptr != end || port < 0 || port > MAX_PORT) return false;
  listenAddress = address;
  listenPort = port;
  return true;
}

bool ReadTls(const std::string& text, AgentOptions& options) {
  const std::size_t colon = text.find(':');
  if (colon == std::string::npos || colon == 0 || colon + 1 == text.size()) return false;
  options.certificateFile = text.substr(0, colon);
  options.keyFile = text.substr(colon + 1);
  return true;
}

void DeclareLimits(CLI::App& app, AgentOptions& options, long long& seconds, long long& wait) {
  app.add_option("--max-body", options.limits.bodyBytes, "Bytes that a request may have")
      ->capture_default_str()
      ->type_name("BYTES")
      ->check(CLI::Range(1024, 1 << 28));
  app.add_option("--max-connections", options.limits.connections, "Connections at once")
      ->capture_default_str()
      ->type_name("N")
      ->check(CLI::Range(1, 4096));
  app.add_option("--max-unsent", options.limits.unsentBytes,
                 "Bytes of memory that all answers may take together")
      ->capture_default_str()
      ->type_name("BYTES")
      ->check(CLI::Range(1, 1 << 30));
  app.add_option("--time-limit", seconds, "Seconds in which a request arrives, an answer is taken")
      ->capture_default_str()
      ->type_name("SECONDS")
      ->check(CLI::Range(1, 3600));
  app.add_option("--ready-wait", wait, "Seconds that a request waits for the first data")
      ->capture_default_str()
      ->type_name("SECONDS")
      ->check(CLI::Range(0, 3600));
}

void DeclareMetrics(CLI::App& app, AgentOptions& options) {
  app.add_option_function<std::string>(
         "--metrics",
         [&](const std::string& text) {
           if (!ReadListen(text, options.metricsAddress, options.metricsPort) ||
               !IsLoopback(options.metricsAddress)) {
             throw CLI::ValidationError(
                 "--metrics", "expected ADDRESS:PORT with an address of loopback, got " + text);
           }
         },
         "Serve /metrics there as well, without users; the address is one of loopback")
      ->type_name("ADDRESS:PORT");
  app.add_option("--metrics-machines", options.metricsMachines,
                 "Machines at most that have a line in the metrics")
      ->capture_default_str()
      ->type_name("N")
      ->check(CLI::Range(0, 1000000));
}

void DeclareIndications(CLI::App& app, AgentOptions& options, CLI::Option* users,
                        long long& retry) {
  app.add_option("--indications-to", options.indicationsTo,
                 "Hosts that users may let indications be sent to: names, addresses and networks, "
                 "with commas between")
      ->type_name("HOSTS")
      ->check([](const std::string& hosts) -> std::string {
        try {
          const AllowedHosts allowed(hosts);
          return allowed.IsEmpty() ? "no host" : "";
        } catch (const std::runtime_error& error) {
          return error.what();
        }
      })
      ->needs(users);
  app.add_option("--state", options.stateFolder, "A folder in which subscriptions are kept")
      ->type_name("DIRECTORY");
  app.add_option("--listener-ca", options.listenerCaFile,
                 "Certificates that verify listeners, a PEM file, in place of the system's")
      ->type_name("FILE")
      ->check(CLI::ExistingFile);
  app.add_option("--delivery-retry", retry, "Seconds before an indication is sent again")
      ->capture_default_str()
      ->type_name("SECONDS")
      ->check(CLI::Range(1, 3600));
}

}  // namespace

std::optional<int> ParseAgentOptions(int argc, const char* const* argv, AgentOptions& options) {
  CLI::App app("Answers CIM-XML requests about a virtualization host and shows a status page.",
               "kecpp-agent");
  long long seconds = options.limits.time.count();
  long long wait = options.readyWait.count();
  long long retry = options.deliveryRetry.count();
  app.add_option("--config", options.config, "Configuration: a file, or an XML text")
      ->type_name("FILE")
      ->check(CheckConfig);
  app.add_option_function<std::string>(
         "--listen",
         [&](const std::string& text) {
           if (!ReadListen(text, options.address, options.port)) {
             throw CLI::ValidationError("--listen", "expected ADDRESS:PORT, got " + text);
           }
         },
         "Where to listen [127.0.0.1:5988]; port 0 takes a free one")
      ->type_name("ADDRESS:PORT");
  app.add_option_function<std::string>(
         "--tls",
         [&](const std::string& text) {
           if (!ReadTls(text, options)) {
             throw CLI::ValidationError("--tls", "expected CERT:KEY, got " + text);
           }
         },
         "Serve HTTPS with this certificate (chain) and key, PEM files")
      ->type_name("CERT:KEY");
  CLI::Option* users =
      app.add_option("--users", options.usersFile, "Who may ask: lines of NAME:HASH, see crypt(5)")
          ->type_name("FILE");
  DeclareIndications(app, options, users, retry);
  DeclareLimits(app, options, seconds, wait);
  DeclareMetrics(app, options);
  app.add_option("--log-level", options.logLevel, "What the library writes to the system log")
      ->type_name("NAME")
      ->check(CLI::IsMember({"none", "panic", "error", "warning", "info", "verbose", "trivia"}));
  app.add_flag("--print-mof{root/cimv2}", options.printMof,
               "Print the classes of a namespace as a MOF file and end")
      ->type_name("[NAMESPACE]")
      ->check(CLI::IsMember({"root/cimv2", "interop"}));
  app.set_version_flag(
      "--version", std::string("kecpp-agent " KECPP_TOOLS_VERSION ", library ") + kecpp::Version());
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : USAGE_ERROR;
  }
  options.limits.time = std::chrono::seconds(seconds);
  options.readyWait = std::chrono::seconds(wait);
  options.deliveryRetry = std::chrono::seconds(retry);
  return {};
}

}  // namespace tools::agent
