// SPDX-License-Identifier: MIT
#include "tools/publish/PublishOptions.h"

#include <CLI/CLI.hpp>
#include <functional>

#include "fleet/Keys.h"
#include "tools/common/ConfigArgument.h"

namespace tools::publish {
namespace {

constexpr int USAGE_ERROR = 2;
constexpr int MAX_PORT = 65535;

std::string CheckSite(const std::string& name) {
  if (!name.empty() && name.size() <= kecpp::fleet::kLongestSiteName) return {};
  return "a site's name has 1 to " + std::to_string(kecpp::fleet::kLongestSiteName) + " bytes";
}

void DeclareCluster(CLI::App& app, PublishOptions& options) {
  const auto readMembers = [&options](const std::string& text) {
    options.cluster.members = kecpp::fleet::ParseMembers(text);
    if (!options.cluster.members.empty()) return;
    throw CLI::ValidationError("--to", "expected http(s)://HOST:PORT[,...], got " + text);
  };
  auto* to = app.add_option_function<std::string>(
                    "--to", readMembers, "Members of the etcd cluster: http(s)://HOST:PORT")
                 ->type_name("URL,...");
  auto* site = app.add_option("--site", options.site, "The name of what this daemon manages")
                   ->type_name("NAME")
                   ->check(CheckSite);
  to->needs(site);
  AddLoginOptions(app, to, options.login);
  app.add_option("--metrics", options.metricsPort,
                 "Serve /metrics on 127.0.0.1 at this port; 0 takes a free one")
      ->type_name("PORT")
      ->check(CLI::Range(0, MAX_PORT))
      ->needs(to);
}

}  // namespace

std::optional<int> ParsePublishOptions(int argc, const char* const* argv, PublishOptions& options) {
  CLI::App app(
      "Publishes the inventory of a virtualization host to an etcd cluster. Without --to it prints "
      "each change on standard output, a line of JSON.",
      PROGRAM);
  app.add_option("--config", options.config, "Configuration: a file, or an XML text")
      ->type_name("FILE")
      ->check(CheckConfig);
  DeclareCluster(app, options);
  app.add_option("--duration", options.duration, "End after so many seconds")
      ->type_name("SECONDS")
      ->check(CLI::Range(0.1, 1e9));
  app.add_option("--log-level", options.logLevel, "What the library writes to the system log")
      ->type_name("NAME")
      ->check(CLI::IsMember({"none", "panic", "error", "warning", "info", "verbose", "trivia"}));
  app.set_version_flag("--version", std::string("kecpp-publish " KECPP_TOOLS_VERSION ", library ") +
                                        kecpp::Version());
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : USAGE_ERROR;
  }
  const ClusterLogin& login = options.login;
  options.cluster.user = login.user;
  options.cluster.password = login.password;
  options.cluster.tls = {login.authorities, login.certificate, login.key};
  // Sites are spread over the members.
  options.cluster.first = std::hash<std::string>()(options.site);
  return {};
}

}  // namespace tools::publish
